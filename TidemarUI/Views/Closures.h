#pragma once

#include <functional>

namespace tidemar {

/// Calls a view's closure, if it has one. The closure may destroy the view, and with it the very
/// closure, of which a copy is called. So the arguments have to be the caller's own and no parts of
/// the view, and the caller touches the view no more. Where the toolkit goes on with the widget
/// after the signal or event that leads here, hand the call to the event loop first.
template <class... Parameters, class... Arguments>
void callClosure(
    std::function<void(Parameters...)> closure,  // NOLINT(performance-unnecessary-value-param)
    const Arguments&... arguments) {
  if (closure) closure(arguments...);
}

}  // namespace tidemar
