#pragma once

#include <QMenu>
#include <QObject>
#include <QSystemTrayIcon>
#include <memory>

#include "Platform/Desktop/TrayHost.h"

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

 private:
  void follow();
  void makeIcon();
  void togglePopover();

  WindowCoordinator& _windows;
  TrayHost _host;
  QMenu _menu;  ///< For hosts that open nothing else.
  std::unique_ptr<QSystemTrayIcon> _icon;
  std::unique_ptr<Popover> _popover;
};

}  // namespace tidemar
