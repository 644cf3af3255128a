#include "Tidemar/TrayMenu.h"

#include "Tidemar/WindowCoordinator.h"
#include "TidemarUI/State/Labels.h"
#include "TidemarUI/State/SystemBin.h"
#include "TidemarUI/Views/TextLabel.h"

namespace tidemar {
namespace {

/// A menu takes a single "&" for the mark of a key.
QString menuText(const std::string& text) {
  return textOf(text).replace(u'&', QStringLiteral("&&"));
}

}  // namespace

TrayMenu::TrayMenu(WindowCoordinator& windows)
    : _windows(windows),
      _headline(addAction(QString())),
      _putBack(addAction(QString())),
      _separator(addSeparator()),
      _states(windows.context().model.executor(), [this](const auto& state) { present(state); }) {
  _headline->setEnabled(false);
  _headline->setVisible(false);
  _putBack->setVisible(false);
  _separator->setVisible(false);
  connect(_putBack, &QAction::triggered, this,
          [this] { _windows.context().model.putBack(_state->journalEntryIDs); });
  addAction(textOf(labels::openTidemar), this, [this] { _windows.showMain(); });
  addAction(textOf(labels::quitTidemar), this, [this] { _windows.context().quit(); });
}

void TrayMenu::standInForPopover() {
  if (_observer) return;
  _observer = std::make_unique<ModelObserver>(_windows.context().model, [this] { refresh(); });
  // It is ready before it is opened, but for a day that has begun since: a menu that grows while it
  // is open runs over the edge of the screen.
  connect(this, &QMenu::aboutToShow, this, &TrayMenu::refresh);
  refresh();
}

void TrayMenu::refresh() {
  const ScreenContext& context = _windows.context();
  _states.ask([snapshot = context.model.snapshot(), now = context.currentDate(),
               formats = context.currentFormats(), bin = SystemBin::name()] {
    return trayMenuState(snapshot->reports, snapshot->journal, now, formats, bin);
  });
}

void TrayMenu::present(const std::shared_ptr<const TrayMenuState>& state) {
  if (!state) return;
  _state = state;
  _headline->setText(menuText(state->headline));
  _headline->setVisible(true);
  _separator->setVisible(true);
  _putBack->setText(menuText(state->putBack));
  _putBack->setVisible(!state->putBack.empty());
}

}  // namespace tidemar
