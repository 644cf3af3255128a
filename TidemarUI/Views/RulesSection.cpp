#include "TidemarUI/Views/RulesSection.h"

#include <QPointer>

#include "TidemarUI/State/FolderDetail.h"
#include "TidemarUI/State/Labels.h"
#include "TidemarUI/State/SettingsEdits.h"
#include "TidemarUI/Views/Closures.h"
#include "TidemarUI/Views/NumberFieldView.h"
#include "TidemarUI/Views/Switch.h"

namespace tidemar {

/// A check box, and at the far edge a number with its unit for the rules that have one.
class RuleRow : public FormRow {
 public:
  RequestingCheckBox* checkBox = nullptr;
  NumberFieldView* number = nullptr;
  TextLabel* unit = nullptr;
  TemporarySettings shown;  ///< What stood on the page when the edit of the number began.

  void show(bool isOn) { checkBox->show(isOn); }
  void show(const NumberField& field) {
    show(field.isEnabled);
    number->show(field);
    unit->show(field.unit);
    unit->setEnabled(field.isEnabled);
    number->setAccessibleDescription(textOf(field.unit));
  }
};

RulesSection::RulesSection(const Formats& formats, const std::string& binName,
                           const SystemNames& names)
    : FormSection(labels::clearAnItemWhen) {
  _age = addRule(labels::ageRule, settingsWithAgeRule);
  addNumber(*_age, formats, labels::ageRule, settingsWithMaxAgeDays);
  _size = addRule(labels::sizeRule, settingsWithSizeRule);
  addNumber(*_size, formats, labels::sizeRule, settingsWithSizeLimit);
  _automatic = addRule(labels::automaticRule, settingsWithAutomatic);
  _automatic->setToolTip(textOf(automaticTooltip(binName)));
  _restart = addRule(labels::restartRule(names), settingsWithEmptyOnRestart);

  // Numbers stand below one another, and so do their units.
  const int unitWidth =
      std::max(_age->unit->fontMetrics().horizontalAdvance(textOf(ageField({}).unit)),
               _size->unit->fontMetrics().horizontalAdvance(textOf(sizeField({}).unit)));
  for (RuleRow* row : {_age, _size})
    row->unit->setFixedWidth(unitWidth + 1);
}

RuleRow* RulesSection::addRule(std::string_view label,
                               TemporarySettings (*edit)(TemporarySettings, bool)) {
  auto* row = new RuleRow;
  row->checkBox = new RequestingCheckBox(textOf(label));
  row->checkBox->onToggle = [this, edit](bool isOn) {
    // A number that was left just now comes first: else it would switch its rule on again.
    const QPointer<RulesSection> self(this);
    finishEdits();
    if (!self) return;
    const TemporarySettings shown = _settings;
    send(shown, edit(shown, isOn));
  };
  QMargins margins = row->line().contentsMargins();
  // The toolkit mirrors what stands in a line, but not its margins.
  if (layoutDirection() == Qt::RightToLeft) {
    margins.setRight(margins.right() - style::checkBoxRing);
  } else {
    margins.setLeft(margins.left() - style::checkBoxRing);
  }
  row->line().setContentsMargins(margins);
  row->line().addWidget(row->checkBox, 1);
  card().addRow(row);
  return row;
}

void RulesSection::addNumber(RuleRow& row, const Formats& formats, std::string_view label,
                             TemporarySettings (*edit)(TemporarySettings, std::int64_t)) {
  row.number = new NumberFieldView(formats);
  row.number->setAccessibleName(textOf(label));
  row.number->onChange = [this, edit, &row](std::int64_t number) {
    // From now on the page shows the new number, so the next edit starts from it.
    const TemporarySettings shown = row.shown;
    row.shown = edit(shown, number);
    send(shown, edit(shown, number));
  };
  row.unit = new TextLabel(style::TextSize::body, QFont::Normal, TextLabel::Tone::secondary,
                           TextLabel::Overflow::elideInMiddle);
  row.line().addWidget(row.number);
  row.line().addWidget(row.unit);
}

void RulesSection::setSettings(const TemporarySettings& settings) {
  _settings = settings;
  _age->show(ageField(settings));
  _size->show(sizeField(settings));
  for (RuleRow* row : {_age, _size}) {
    if (!row->number->isEdited()) row->shown = settings;
  }
  _automatic->show(settings.automatic);
  const bool canSet = canSetAutomatic(settings);
  _automatic->checkBox->setEnabled(canSet);
  _automatic->checkBox->setAccessibleDescription(canSet ? QString() : _automatic->toolTip());
  _restart->show(settings.emptyOnRestart);
  setFooter(rulesFooter(settings));
}

void RulesSection::finishEdits() {
  using Number = QPointer<NumberFieldView>;
  for (const Number& number : {Number(_age->number), Number(_size->number)}) {
    if (number) number->finishEdit();
  }
}

void RulesSection::send(const TemporarySettings& shown, const TemporarySettings& wanted) const {
  callClosure(onChangeSettings, shown, wanted);
}

}  // namespace tidemar
