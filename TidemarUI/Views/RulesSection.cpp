#include "TidemarUI/Views/RulesSection.h"

#include "TidemarUI/State/FolderDetail.h"
#include "TidemarUI/State/Labels.h"
#include "TidemarUI/State/SettingsEdits.h"
#include "TidemarUI/Views/NumberFieldView.h"
#include "TidemarUI/Views/Switch.h"

namespace tidemar {

/// A check box, and at the far edge a number with its unit for the rules that have one.
class RuleRow : public FormRow {
 public:
  RequestingCheckBox* checkBox = nullptr;
  NumberFieldView* number = nullptr;
  TextLabel* unit = nullptr;

  void show(bool isOn) { checkBox->show(isOn); }
  void show(const NumberField& field) {
    show(field.isEnabled);
    number->show(field);
    unit->show(field.unit);
    unit->setEnabled(field.isEnabled);
    number->setAccessibleDescription(textOf(field.unit));
  }
};

RulesSection::RulesSection(const Formats& formats, const std::string& binName)
    : FormSection(labels::clearAnItemWhen) {
  _age = addRule(labels::ageRule, settingsWithAgeRule);
  addNumber(*_age, formats, labels::ageRule, settingsWithMaxAgeDays);
  _size = addRule(labels::sizeRule, settingsWithSizeRule);
  addNumber(*_size, formats, labels::sizeRule, settingsWithSizeLimit);
  _automatic = addRule(labels::automaticRule, settingsWithAutomatic);
  _automatic->setToolTip(textOf(automaticTooltip(binName)));
  _restart = addRule(labels::restartRule, settingsWithEmptyOnRestart);

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
  row->checkBox->onToggle = [this, edit](bool isOn) { send(edit(_settings, isOn)); };
  QMargins margins = row->line().contentsMargins();
  margins.setLeft(margins.left() - style::checkBoxRing);
  row->line().setContentsMargins(margins);
  row->line().addWidget(row->checkBox, 1);
  card().addRow(row);
  return row;
}

void RulesSection::addNumber(RuleRow& row, const Formats& formats, std::string_view label,
                             TemporarySettings (*edit)(TemporarySettings, std::int64_t)) {
  row.number = new NumberFieldView(formats);
  row.number->setAccessibleName(textOf(label));
  row.number->onChange = [this, edit](std::int64_t number) { send(edit(_settings, number)); };
  row.unit = new TextLabel(style::TextSize::body, QFont::Normal, TextLabel::Tone::secondary,
                           TextLabel::Overflow::elideInMiddle);
  row.line().addWidget(row.number);
  row.line().addWidget(row.unit);
}

void RulesSection::setSettings(const TemporarySettings& settings) {
  _settings = settings;
  _age->show(ageField(settings));
  _size->show(sizeField(settings));
  _automatic->show(settings.automatic);
  _automatic->checkBox->setEnabled(canSetAutomatic(settings));
  _restart->show(settings.emptyOnRestart);
  setFooter(rulesFooter(settings));
}

void RulesSection::finishEdits() {
  for (RuleRow* row : {_age, _size})
    row->number->finishEdit();
}

void RulesSection::send(const TemporarySettings& settings) const {
  if (onChangeSettings) onChangeSettings(settings);
}

}  // namespace tidemar
