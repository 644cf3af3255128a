#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tidemar {

/// How often a free name is sought in a Trash before that is given up.
inline constexpr unsigned trashNameAttempts = 32;

/// The name that an item gets in a Trash: on attempt 0 its own, then "name.2.ext" and so on for a
/// few, then one with a random number, so that thousands of equal names cost no more than a few
/// attempts each. Never longer than `limit` bytes, which are 64 or more; what must go is cut off in
/// front of the ending, at the boundary of a UTF-8 character.
std::string trashName(std::string_view name, unsigned attempt, std::size_t limit);

/// The name with a number of this form in front of its ending, cut as above.
std::string numberedName(std::string_view name, std::string_view number, std::size_t limit);

}  // namespace tidemar
