#pragma once

#include <functional>

#include "TidemarCore/FileURL.h"

namespace tidemar::testing {

/// Runs `body` on a thread with a stack of 256 KiB while the process may have 64 descriptors open.
void withSmallThread(const std::function<void()>& body);

/// Runs `body` as a user without privileges, who owns `tree` meanwhile, where the tests run as
/// root; else as it is.
void asOrdinaryUser(const FileURL& tree, const std::function<void()>& body);

}  // namespace tidemar::testing
