#include "Tidemar/MenuBarExtra.h"

#include "Tidemar/Popover.h"
#include "Tidemar/WindowCoordinator.h"
#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/Icons.h"
#include "TidemarUI/Views/TextLabel.h"

namespace tidemar {

MenuBarExtra::MenuBarExtra(WindowCoordinator& windows) : _windows(windows) {
  _menu.addAction(textOf(labels::openTidemar), this, [this] { _windows.showMain(); });
  _menu.addAction(textOf(labels::quitTidemar), this, [this] { _windows.context().quit(); });
  connect(&_host, &TrayHost::becameAvailable, this, &MenuBarExtra::follow);
  connect(&windows, &WindowCoordinator::showInMenuBarChanged, this, &MenuBarExtra::follow);
  follow();
}

MenuBarExtra::~MenuBarExtra() = default;

void MenuBarExtra::follow() {
  if (!_host.isAvailable()) return;
  const bool isWanted = _windows.context().defaults.boolean(showInMenuBarKey).value_or(true);
  if (isWanted && !_icon) {
    makeIcon();
  } else if (!isWanted) {
    _icon.reset();
    _popover.reset();
  }
}

void MenuBarExtra::makeIcon() {
  _icon = std::make_unique<QSystemTrayIcon>(icons::menuBar());
  _icon->setToolTip(textOf(labels::tidemar));
  _icon->setContextMenu(&_menu);
  connect(_icon.get(), &QSystemTrayIcon::activated, this,
          [this](QSystemTrayIcon::ActivationReason reason) {
            if (reason == QSystemTrayIcon::Trigger) togglePopover();
          });
  _icon->show();
}

void MenuBarExtra::togglePopover() {
  // Most starts are those of a session, which nobody looks at.
  if (!_popover) _popover = std::make_unique<Popover>(_windows);
  _popover->toggle(_icon->geometry());
}

}  // namespace tidemar
