#pragma once

#include <functional>

#include "TidemarCore/FileURL.h"

namespace tidemar::testing {

/// Runs `body` in a thread of its own in which every call of one system call (SYS_...) fails with
/// this errno value. An exception of the body comes out of here.
void withFailingSystemCall(long systemCall, int code, const std::function<void()>& body);

/// Runs `body` in a thread of its own and, each time that this or a process which it started is
/// about to make one system call, `action` in the calling thread with the number of the call, the
/// first being 1. Only then the call is made. An exception of the body comes out of here.
void withActionBefore(long systemCall, const std::function<void(int)>& action,
                      const std::function<void()>& body);

/// Runs `body` on a thread with a stack of 256 KiB while the process may have 64 descriptors open.
void withSmallThread(const std::function<void()>& body);

/// Runs `body` as a user without privileges, who owns `tree` meanwhile, where the tests run as
/// root; else as it is.
void asOrdinaryUser(const FileURL& tree, const std::function<void()>& body);

}  // namespace tidemar::testing
