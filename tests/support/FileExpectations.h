#pragma once

#include <functional>
#include <set>
#include <string>

#include "TidemarCore/FileURL.h"

namespace tidemar::testing {

/// The names of what lies in a directory; none where there is none.
std::set<std::string> namesIn(const FileURL& directory);

/// The code of the PlatformError that a call throws, 0 if it succeeds.
int codeOf(const std::function<void()>& call);

/// The `Path` of a Trash record, as it is written.
std::string pathIn(const FileURL& record);

}  // namespace tidemar::testing
