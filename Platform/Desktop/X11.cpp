#include "Platform/Desktop/X11.h"

#include <QGuiApplication>
#include <cstdint>

namespace tidemar::X11 {

xcb_connection_t* connection() {
  const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  return x11 == nullptr ? nullptr : x11->connection();
}

xcb_atom_t atom(std::string_view name) {
  const auto cookie =
      xcb_intern_atom(connection(), 0, static_cast<std::uint16_t>(name.size()), name.data());
  const auto reply = owned(xcb_intern_atom_reply(connection(), cookie, nullptr));
  return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

}  // namespace tidemar::X11
