#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// In bytes.
inline constexpr std::size_t longestFolderLink = 64 * 1024;

/// The folder that a URL of the form "tidemar://folder?path={path}" names: the bytes of its first
/// query item "path" after percent-decoding (RFC 3986). None for any other scheme or host (compared
/// exactly), without such an item, for a malformed escape, a path that isn't absolute or holds a
/// NUL, and for a URL longer than `longestFolderLink`.
std::optional<FileURL> folderOfLink(std::string_view url);

}  // namespace tidemar
