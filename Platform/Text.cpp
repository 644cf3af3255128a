#include "Platform/Text.h"

#include "Platform/Locale/UnicodeText.h"

namespace tidemar {

std::string displayText(std::string_view bytes) {
  return toUTF8(fromUTF8(bytes));
}

}  // namespace tidemar
