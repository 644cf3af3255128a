#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// The tags of an open directory in the order in which they stand: the parts of its extended
/// attribute `user.xdg.tags` between the commas, byte for byte, with blanks and empty parts kept,
/// so that writing what was read changes nothing. Empty where there is no attribute, where it is
/// empty and where the file system keeps none. `url` is for the PlatformError that is thrown on
/// failure.
std::vector<std::string> readTagNames(int directory, const FileURL& url);

/// Replaces all tags; an empty list removes the attribute. On failure the old tags stay and the
/// PlatformError tells the user what to do about it.
void writeTagNames(int directory, const FileURL& url, std::span<const std::string> tags);

/// The tags in the value of the attribute, and the value for a list of tags. What was split and is
/// joined again is the same byte for byte.
std::vector<std::string> splitTagNames(std::string_view value);
std::string joinTagNames(std::span<const std::string> tags);

}  // namespace tidemar
