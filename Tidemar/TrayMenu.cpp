#include "Tidemar/TrayMenu.h"

#include "Tidemar/WindowCoordinator.h"
#include "TidemarUI/State/Labels.h"
#include "TidemarUI/State/MenuBarState.h"
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
    : _windows(windows), _headline(addAction(QString())), _putBack(addAction(QString())) {
  _headline->setEnabled(false);
  _headline->setVisible(false);
  _putBack->setVisible(false);
  connect(_putBack, &QAction::triggered, this,
          [this] { _windows.context().model.putBack(_putBackIDs); });
  addSeparator();
  addAction(textOf(labels::openTidemar), this, [this] { _windows.showMain(); });
  addAction(textOf(labels::quitTidemar), this, [this] { _windows.context().quit(); });
  // At once: a menu that grows while it is open runs over the edge of the screen.
  connect(this, &QMenu::aboutToShow, this, &TrayMenu::refresh);
}

void TrayMenu::refresh() {
  const ScreenContext& context = _windows.context();
  const auto snapshot = context.model.snapshot();
  const TrayMenuState state =
      trayMenuState(snapshot->reports, snapshot->journal, context.currentDate(),
                    context.currentFormats(), SystemBin::name());
  _headline->setText(menuText(state.headline));
  _headline->setVisible(true);
  _putBackIDs = state.journalEntryIDs;
  _putBack->setText(menuText(state.putBack));
  _putBack->setVisible(!state.putBack.empty());
}

}  // namespace tidemar
