#include "Platform/Desktop/TaskBar.h"

#include <QWidget>
#include <array>

#include "Platform/Desktop/X11.h"

namespace tidemar::TaskBar {

void leaveOut(QWidget& window) {
  xcb_connection_t* connection = X11::connection();
  if (connection == nullptr) return;
  // What stands there before a window is mapped is taken over by the window manager (Extended
  // Window Manager Hints, _NET_WM_STATE).
  const std::array states = {X11::atom("_NET_WM_STATE_SKIP_TASKBAR"),
                             X11::atom("_NET_WM_STATE_SKIP_PAGER")};
  xcb_change_property(connection, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()),
                      X11::atom("_NET_WM_STATE"), XCB_ATOM_ATOM, 32, states.size(), states.data());
}

}  // namespace tidemar::TaskBar
