#pragma once

#include <cstdlib>
#include <memory>
#include <string_view>

#include <xcb/xcb.h>

/// The toolkit's connection to an X server. Main thread.
namespace tidemar::X11 {

/// Null on any other display.
xcb_connection_t* connection();

/// What the server has answered, freed with its owner; null for no answer.
template <class Reply>
std::unique_ptr<Reply, decltype(&std::free)> owned(Reply* reply) {
  return {reply, &std::free};
}

/// XCB_ATOM_NONE where the server doesn't answer.
xcb_atom_t atom(std::string_view name);

}  // namespace tidemar::X11
