#include "Platform/Text.h"

#include <cstdint>

#include <unicode/unistr.h>

namespace tidemar {

std::string displayText(std::string_view bytes) {
  const icu::StringPiece piece(bytes.data(), static_cast<std::int32_t>(bytes.size()));
  std::string text;
  icu::UnicodeString::fromUTF8(piece).toUTF8String(text);
  return text;
}

}  // namespace tidemar
