#pragma once

#include <functional>

namespace tidemar::testing {

/// Runs `body` in a thread of its own in which every call of one system call (SYS_...) fails with
/// this errno value. An exception of the body comes out of here.
void withFailingSystemCall(long systemCall, int code, const std::function<void()>& body);

}  // namespace tidemar::testing
