#include "Platform/Desktop/ExtensionWindow.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QEvent>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace tidemar {

/// Whatever toggles it but `refresh` reaches the entry: a screen reader doesn't click.
class ExtensionWindow::Box : public QCheckBox {
 public:
  Box(MenuEntry& entry, const Switch& onSwitch)
      : QCheckBox(QString::fromStdString(entry.name())), _entry(entry) {
    refresh();
    connect(this, &QCheckBox::toggled, this, [this, onSwitch](bool isOn) {
      onSwitch(_entry, isOn);
      refresh();
    });
  }

  void refresh() {
    const QSignalBlocker quiet(this);
    setChecked(_entry.isInstalled());
  }

 private:
  MenuEntry& _entry;
};

namespace {

QLabel* label(const std::string& text) {
  auto* result = new QLabel(QString::fromStdString(text));
  result->setTextFormat(Qt::PlainText);
  result->setWordWrap(true);
  return result;
}

}  // namespace

ExtensionWindow::ExtensionWindow(const std::vector<MenuEntry*>& entries,
                                 const ExtensionTexts& texts, const Switch& onSwitch) {
  setWindowTitle(QString::fromStdString(texts.title));
  auto* layout = new QVBoxLayout(this);
  if (entries.empty()) {
    layout->addWidget(label(texts.noFileManager));
  } else {
    layout->addWidget(label(texts.explanation));
    for (MenuEntry* entry : entries) {
      _boxes.push_back(new Box(*entry, onSwitch));
      layout->addWidget(_boxes.back());
    }
    layout->addWidget(label(texts.hint));
    _boxes.front()->setFocus();
  }
  if (!texts.note.empty()) layout->addWidget(label(texts.note));
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
  buttons->button(QDialogButtonBox::Close)->setIcon({});
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  layout->addWidget(buttons);
  setMinimumWidth(380);
}

bool ExtensionWindow::event(QEvent* event) {
  if (event->type() == QEvent::WindowActivate) {
    for (Box* box : _boxes)
      box->refresh();
  }
  return QDialog::event(event);
}

}  // namespace tidemar
