#include "Platform/Desktop/PointerPresses.h"

#include <QCoreApplication>
#include <utility>

#include <xcb/xinput.h>

#include "Platform/Desktop/X11.h"

namespace tidemar {
namespace {

/// The wheel is buttons, too, from the fourth on.
constexpr std::uint32_t lastButton = 3;

void select(xcb_connection_t* connection, std::uint32_t events) {
  struct {
    xcb_input_event_mask_t head;
    std::uint32_t mask;
  } request{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, events};
  const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
  xcb_input_xi_select_events(connection, root, 1, &request.head);
  xcb_flush(connection);
}

}  // namespace

PointerPresses::PointerPresses(QObject* parent) : QObject(parent) {}

PointerPresses::~PointerPresses() {
  follow(false);
}

void PointerPresses::follow(bool isOn) {
  xcb_connection_t* connection = X11::connection();
  if (connection == nullptr || std::exchange(_isOn, isOn) == isOn) return;
  const auto* extension = xcb_get_extension_data(connection, &xcb_input_id);
  if (extension == nullptr || extension->present == 0) return;
  if (isOn) {
    qApp->installNativeEventFilter(this);
  } else {
    qApp->removeNativeEventFilter(this);
  }
  select(connection, isOn ? XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS : 0);
}

bool PointerPresses::nativeEventFilter(const QByteArray& type, void* message, qintptr*) {
  if (type != "xcb_generic_event_t") return false;
  const auto* event = static_cast<const xcb_ge_generic_event_t*>(message);
  if ((event->response_type & 0x7F) != XCB_GE_GENERIC) return false;
  const auto* extension = xcb_get_extension_data(X11::connection(), &xcb_input_id);
  if (event->extension != extension->major_opcode ||
      event->event_type != XCB_INPUT_RAW_BUTTON_PRESS)
    return false;
  const auto* press = static_cast<const xcb_input_raw_button_press_event_t*>(message);
  // The window that shall close must not be closed from within the display's events.
  if (press->detail <= lastButton)
    QMetaObject::invokeMethod(this, &PointerPresses::pressed, Qt::QueuedConnection);
  return false;
}

}  // namespace tidemar
