#include "Platform/Files/Trash/PercentEncoding.h"

#include <optional>

namespace tidemar {
namespace {

bool standsPlain(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
         c == '.' || c == '_' || c == '~' || c == '/';
}

std::optional<int> hexadecimalDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return std::nullopt;
}

}  // namespace

std::string percentEncoded(std::string_view bytes) {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::string text;
  text.reserve(bytes.size());
  for (const char c : bytes) {
    if (standsPlain(c)) {
      text += c;
    } else {
      const auto value = static_cast<unsigned char>(c);
      text += '%';
      text += digits[value >> 4U];
      text += digits[value & 0xFU];
    }
  }
  return text;
}

std::optional<std::string> percentDecoded(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      bytes += text[i];
      continue;
    }
    if (text.size() - i < 3) return std::nullopt;
    const auto high = hexadecimalDigit(text[i + 1]);
    const auto low = hexadecimalDigit(text[i + 2]);
    if (!high || !low) return std::nullopt;
    bytes += static_cast<char>(*high * 16 + *low);
    i += 2;
  }
  return bytes;
}

}  // namespace tidemar
