#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tidemar {

/// Bytes as they stand in a URL path: letters, digits, "-", ".", "_", "~" and "/" plain, every
/// other byte as "%" with two upper-case hexadecimal digits.
std::string percentEncoded(std::string_view bytes);

/// The bytes that such a text stands for; none where a "%" lacks its two hexadecimal digits.
std::optional<std::string> percentDecoded(std::string_view text);

}  // namespace tidemar
