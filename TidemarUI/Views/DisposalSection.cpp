#include "TidemarUI/Views/DisposalSection.h"

#include <QPushButton>
#include <QWheelEvent>
#include <utility>

#include "TidemarUI/State/DisposalText.h"
#include "TidemarUI/State/FolderDetail.h"
#include "TidemarUI/State/Labels.h"
#include "TidemarUI/State/SettingsEdits.h"
#include "TidemarUI/Views/Closures.h"

namespace tidemar {
namespace {

/// A picker whose value is changed by nothing but a choice.
class Picker : public QComboBox {
 protected:
  void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

}  // namespace

DisposalSection::DisposalSection(std::string binName)
    : _binName(std::move(binName)), _picker(new Picker) {
  for (const Disposal disposal : {Disposal::bin, Disposal::delete_})
    _picker->addItem(textOf(disposalText(disposal, _binName)), static_cast<int>(disposal));
  _picker->setAccessibleName(textOf(labels::clearedItems));

  auto* row = new FormRow;
  auto* label = new TextLabel(style::TextSize::body, QFont::Normal, TextLabel::Tone::primary,
                              TextLabel::Overflow::wrap);
  label->show(labels::clearedItems);
  label->setBuddy(_picker);
  row->line().addWidget(label, 1);
  row->line().addWidget(_picker);
  card().addRow(row);

  connect(_picker, &QComboBox::activated, this, [this](int index) {
    const auto chosen = static_cast<Disposal>(_picker->itemData(index).toInt());
    setSettings(_settings);
    if (chosen == _settings.disposal) return;
    if (chosen == Disposal::delete_) {
      confirmDelete();
    } else {
      choose(chosen);
    }
  });
}

void DisposalSection::setSettings(const TemporarySettings& settings) {
  _settings = settings;
  _picker->setCurrentIndex(_picker->findData(static_cast<int>(settings.disposal)));
  const DisposalFooter footer = disposalFooter(settings.disposal, _binName);
  setFooter(footer.text, footer.isWarning ? TextLabel::Tone::warning : TextLabel::Tone::secondary);
}

void DisposalSection::cancelConfirmation() {
  if (_confirmation) _confirmation->reject();
}

void DisposalSection::confirmDelete() {
  if (_confirmation) return;
  auto* box = new QMessageBox(this);
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->setIcon(QMessageBox::Warning);
  box->setWindowTitle(textOf(labels::tidemar));
  box->setTextFormat(Qt::PlainText);
  box->setText(textOf(labels::deleteConfirmationTitle));
  box->setInformativeText(textOf(deleteConfirmationMessage(_binName)));
  QPushButton* deleteButton =
      box->addButton(textOf(labels::deletePermanently), QMessageBox::DestructiveRole);
  QPushButton* cancelButton = box->addButton(textOf(labels::cancel), QMessageBox::RejectRole);
  // Neither Return nor Escape deletes.
  box->setDefaultButton(cancelButton);
  box->setEscapeButton(cancelButton);
  QPalette palette = deleteButton->palette();
  palette.setColor(QPalette::ButtonText, style::warning(palette));
  deleteButton->setPalette(palette);
  connect(box, &QMessageBox::buttonClicked, this, [this, deleteButton](QAbstractButton* button) {
    if (button == deleteButton) choose(Disposal::delete_);
  });
  _confirmation = box;
  box->open();
}

void DisposalSection::choose(Disposal disposal) {
  _choice = {_settings, settingsWithDisposal(_settings, disposal)};
  // Picker and question still have work of their own to do after they told the choice.
  QMetaObject::invokeMethod(
      this, [this] { finishEdit(); }, Qt::QueuedConnection);
}

void DisposalSection::finishEdit() {
  if (const auto choice = std::exchange(_choice, std::nullopt))
    callClosure(onChangeSettings, choice->shown, choice->wanted);
}

}  // namespace tidemar
