#pragma once

#include <QObject>
#include <QSystemTrayIcon>
#include <memory>

#include "Platform/Desktop/PanelGround.h"
#include "Platform/Desktop/TrayHost.h"
#include "Tidemar/TrayMenu.h"
#include "TidemarUI/Views/Icons.h"

namespace tidemar {

class Popover;
class WindowCoordinator;

/// The icon beside the clock with its popover: there while the user wants it and the desktop has a
/// place for it, which can come up later than the program. Main thread.
class MenuBarExtra : public QObject {
  Q_OBJECT
 public:
  explicit MenuBarExtra(WindowCoordinator& windows);
  ~MenuBarExtra() override;

  /// Whether the icon is there to be seen.
  bool isShown() const noexcept { return _icon != nullptr; }

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void follow();
  void makeIcon();
  void togglePopover();
  void showPicture();

  WindowCoordinator& _windows;
  TrayHost _host;
  TrayMenu _menu;
  std::unique_ptr<QSystemTrayIcon> _icon;
  std::unique_ptr<PanelGround> _panel;
  icons::Ground _ground = icons::Ground::unknown;
  std::unique_ptr<Popover> _popover;
};

}  // namespace tidemar
