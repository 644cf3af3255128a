#include "Platform/Files/Trash/PercentEncoding.h"

#include <algorithm>
#include <cctype>

#include "fuzz/Check.h"

namespace tidemar::fuzz {
namespace {

bool isHexadecimal(char c) {
  return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

/// The same by another way.
std::optional<std::string> decoded(std::string_view text) {
  std::string bytes;
  while (!text.empty()) {
    const std::size_t escape = std::min(text.find('%'), text.size());
    bytes += text.substr(0, escape);
    text.remove_prefix(escape);
    if (text.empty()) break;
    if (text.size() < 3 || !isHexadecimal(text[1]) || !isHexadecimal(text[2])) return std::nullopt;
    bytes += static_cast<char>(std::stoi(std::string(text.substr(1, 2)), nullptr, 16));
    text.remove_prefix(3);
  }
  return bytes;
}

}  // namespace

void check(std::string_view input) {
  const std::string encoded = percentEncoded(input);
  require(percentDecoded(encoded) == input, "what is encoded is decoded to the same bytes");
  require(std::ranges::all_of(encoded, [](char c) { return c > ' ' && c <= '~'; }),
          "an encoded text is visible ASCII");
  require(percentDecoded(input) == decoded(input),
          "a text whose escapes are whole is decoded, and no other");
}

}  // namespace tidemar::fuzz
