#pragma once

#include <expected>
#include <string>

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// The absolute path without links of what lies at a place. Answers an errno value for a path that
/// leads nowhere or holds a NUL.
std::expected<std::string, int> canonicalPath(const FileURL& url);

}  // namespace tidemar
