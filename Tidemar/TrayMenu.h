#pragma once

#include <QMenu>
#include <memory>

#include "Tidemar/ModelObserver.h"
#include "Tidemar/StateMaker.h"
#include "TidemarUI/State/MenuBarState.h"

namespace tidemar {

class WindowCoordinator;

/// The menu of the icon beside the clock. Main thread.
class TrayMenu : public QMenu {
 public:
  explicit TrayMenu(WindowCoordinator& windows);

  /// From now on it says what goes and puts the latest run back as well: for a desktop that may
  /// open nothing else.
  void standInForPopover();

 private:
  void refresh();
  void present(const std::shared_ptr<const TrayMenuState>& state);

  WindowCoordinator& _windows;
  QAction* _headline;
  QAction* _putBack;
  QAction* _separator;
  std::shared_ptr<const TrayMenuState> _state;  ///< What is shown, once there is anything.
  StateMaker<TrayMenuState> _states;
  std::unique_ptr<ModelObserver> _observer;
};

}  // namespace tidemar
