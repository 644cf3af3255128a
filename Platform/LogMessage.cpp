#include "Platform/LogMessage.h"

#include "Platform/Text.h"

namespace tidemar {
namespace {

void appendEscaped(std::string& message, std::string_view value) {
  constexpr std::string_view digits = "0123456789abcdef";
  const std::string text = displayText(value);
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
    // U+0080 to U+009F, in two bytes, are control characters to a terminal too.
    const bool isTwoByteControl = byte == 0xc2 && next < 0xa0;
    if (byte == '\n') {
      message += "\\n";
    } else if (byte < 0x20 || byte == 0x7f || isTwoByteControl) {
      const unsigned code = isTwoByteControl ? next : byte;
      ((message += "\\x") += digits[code >> 4]) += digits[code & 0xf];
      if (isTwoByteControl) ++i;
    } else {
      message += text[i];
    }
  }
}

void appendValue(std::string& message, const LogArgument& argument) {
  if (const auto* number = std::get_if<std::int64_t>(&argument)) {
    message += std::to_string(*number);
  } else {
    appendEscaped(message, std::get<std::string_view>(argument));
  }
}

}  // namespace

std::string logMessage(std::string_view format, std::span<const LogArgument> arguments,
                       PrivateValues privateValues) {
  std::string message;
  std::size_t position = 0;
  for (std::size_t used = 0;; ++used) {
    const LogPlaceholder next = LogPlaceholder::find(format, position);
    message += format.substr(position, next.begin - position);
    if (next.length == 0) return message;
    position = next.begin + next.length;

    const bool isHidden =
        next.kind == LogPlaceholder::Kind::privateText && privateValues == PrivateValues::hidden;
    if (isHidden) {
      message += "<private>";
    } else if (used >= arguments.size()) {
      message += "<missing>";
    } else {
      appendValue(message, arguments[used]);
    }
  }
}

}  // namespace tidemar
