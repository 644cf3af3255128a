#include "Platform/Locale/UnicodeText.h"

#include <cstdint>

namespace tidemar {

icu::UnicodeString fromUTF8(std::string_view text) {
  return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

std::string toUTF8(const icu::UnicodeString& text) {
  std::string result;
  return text.toUTF8String(result);
}

}  // namespace tidemar
