#pragma once

#include <QElapsedTimer>
#include <QWidget>
#include <functional>

#include "Platform/Desktop/PointerPresses.h"
#include "Tidemar/ModelObserver.h"
#include "Tidemar/ScreenContext.h"
#include "Tidemar/StateMaker.h"
#include "TidemarUI/State/MenuBarState.h"

namespace tidemar {

class MenuBarView;
class WindowCoordinator;

/// The window of the menu bar icon, with the popover's content over the model. It closes when it
/// loses the focus, and by a click beside it where that takes the focus from nobody, as on a panel.
/// On Wayland, where no program may place its windows, it is an ordinary small window. Main thread.
class Popover : public QWidget {
  Q_OBJECT
 public:
  explicit Popover(WindowCoordinator& windows);

  /// Opens it at the icon as soon as its content is made, or closes it. `icon` is where that stands
  /// on the screen; an empty rectangle if that isn't known.
  void toggle(const QRect& icon);

  /// Whether a program may say where its windows stand on this display.
  static bool canBePlaced();

 protected:
  bool event(QEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void connectClosures();
  void refresh();
  void present(std::shared_ptr<const MenuBarState> state);
  void place();
  void closeBy(const QPoint& press);

  WindowCoordinator& _windows;
  MenuBarView* _view;
  QRect _icon;
  QElapsedTimer _sinceFocusLoss;
  PointerPresses _presses;
  bool _isOpening = false;  ///< It is shown once its state is made.
  StateMaker<MenuBarState> _states;
  ModelObserver _observer;
};

/// Where a popover of that size stands: at the icon, within what is available of its screen, on the
/// side of the icon where there is room.
QRect popoverFrame(const QRect& icon, const QSize& size, const QRect& available);

}  // namespace tidemar
