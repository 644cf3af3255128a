#pragma once

#include <string_view>

#include <xcb/xcb.h>

/// The toolkit's connection to an X server. Main thread.
namespace tidemar::X11 {

/// Null on any other display.
xcb_connection_t* connection();

/// XCB_ATOM_NONE where the server doesn't answer.
xcb_atom_t atom(std::string_view name);

}  // namespace tidemar::X11
