#pragma once

#include <string>
#include <string_view>

#include <unicode/unistr.h>

namespace tidemar {

/// ICU's form of a text. What isn't UTF-8 becomes U+FFFD.
icu::UnicodeString fromUTF8(std::string_view text);

std::string toUTF8(const icu::UnicodeString& text);

}  // namespace tidemar
