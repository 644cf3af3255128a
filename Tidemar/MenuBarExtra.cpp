#include "Tidemar/MenuBarExtra.h"

#include <QApplication>
#include <QEvent>

#include "Platform/Desktop/CurrentDesktop.h"
#include "Tidemar/Popover.h"
#include "Tidemar/WindowCoordinator.h"
#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/Icons.h"
#include "TidemarUI/Views/TextLabel.h"

namespace tidemar {

MenuBarExtra::MenuBarExtra(WindowCoordinator& windows) : _windows(windows), _menu(windows) {
  connect(&_host, &TrayHost::becameAvailable, this, &MenuBarExtra::follow);
  connect(&windows, &WindowCoordinator::showInMenuBarChanged, this, &MenuBarExtra::follow);
  qApp->installEventFilter(this);
  follow();
}

MenuBarExtra::~MenuBarExtra() = default;

void MenuBarExtra::follow() {
  if (!_host.isAvailable()) return;
  const bool isWanted = _windows.context().defaults.boolean(showInMenuBarKey).value_or(true);
  if (isWanted && !_icon) {
    makeIcon();
  } else if (!isWanted) {
    _panel.reset();
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
  _panel = std::make_unique<PanelGround>(*_icon);
  connect(_panel.get(), &PanelGround::told, this, [this](bool isDark) {
    _ground = isDark ? icons::Ground::dark : icons::Ground::light;
    showPicture();
  });
  // An embedded icon opens the popover, on every desktop.
  if (!_panel->isEmbedded()) _menu.standInForPopover();
}

void MenuBarExtra::showPicture() {
  if (_icon) _icon->setIcon(icons::menuBar(_ground));
}

bool MenuBarExtra::eventFilter(QObject* object, QEvent* event) {
  // A host that colours the picture keeps it as it is until it is told of another.
  if (object == qApp && event->type() == QEvent::ApplicationPaletteChange) showPicture();
  return QObject::eventFilter(object, event);
}

void MenuBarExtra::togglePopover() {
  // There the icon's menu stands in for the popover, and on Wayland a window that may not say where
  // it stands comes up in the corner that is farthest from the icon.
  if (!Popover::canBePlaced() && CurrentDesktop::is(QStringLiteral("GNOME"))) {
    _windows.showMain();
    return;
  }
  // Most starts are those of a session, which nobody looks at.
  if (!_popover) _popover = std::make_unique<Popover>(_windows);
  _popover->toggle(_icon->geometry());
}

}  // namespace tidemar
