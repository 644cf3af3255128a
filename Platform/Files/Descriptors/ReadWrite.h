#pragma once

#include <cstddef>
#include <expected>
#include <string>
#include <string_view>

namespace tidemar {

/// What an open file has from its present position to its end. Answers an errno value where it
/// can't be read, EFBIG where that is more than `longest` bytes.
std::expected<std::string, int> readToEnd(int descriptor, std::size_t longest = std::string::npos);

/// Writes all of it to an open file, in as many steps as it takes. Answers 0, or an errno value
/// after which a part may have been written; EIO for a file that takes nothing and gives no reason.
int writeAll(int descriptor, std::string_view content) noexcept;

}  // namespace tidemar
