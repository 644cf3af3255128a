#include "Platform/Desktop/TaskBar.h"

#include <QWidget>

#include "Platform/Desktop/X11.h"

namespace tidemar::TaskBar {

void leaveOut(QWidget& window) {
  xcb_connection_t* connection = X11::connection();
  if (connection == nullptr) return;
  // A shown window asks the window manager by a message to the root window (Extended Window Manager
  // Hints, _NET_WM_STATE).
  constexpr std::uint32_t add = 1;
  constexpr std::uint32_t fromApplication = 1;
  xcb_client_message_event_t message{};
  message.response_type = XCB_CLIENT_MESSAGE;
  message.format = 32;
  message.window = static_cast<xcb_window_t>(window.winId());
  message.type = X11::atom("_NET_WM_STATE");
  message.data.data32[0] = add;
  message.data.data32[1] = X11::atom("_NET_WM_STATE_SKIP_TASKBAR");
  message.data.data32[2] = X11::atom("_NET_WM_STATE_SKIP_PAGER");
  message.data.data32[3] = fromApplication;
  const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
  xcb_send_event(connection, 0, root,
                 XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                 reinterpret_cast<const char*>(&message));
  xcb_flush(connection);
}

}  // namespace tidemar::TaskBar
