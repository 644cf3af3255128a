#pragma once

#include <string>
#include <string_view>

namespace tidemar {

/// Bytes as they stand in a URL path: letters, digits, "-", ".", "_", "~" and "/" plain, every
/// other byte as "%" with two upper-case hexadecimal digits.
std::string percentEncoded(std::string_view bytes);

/// The bytes that such a text stands for. A "%" without two hexadecimal digits stands for itself.
std::string percentDecoded(std::string_view text);

}  // namespace tidemar
