#include "Platform/Extension/Quoting.h"

namespace tidemar {
namespace {

/// Puts the text that `replacement` gives for a character in its place; nullptr keeps it.
template <typename Replacement>
std::string replacing(std::string_view bytes, Replacement replacement) {
  std::string result;
  for (const char c : bytes) {
    if (const char* text = replacement(c)) {
      result += text;
    } else {
      result += c;
    }
  }
  return result;
}

}  // namespace

std::string shellQuoted(std::string_view bytes) {
  return "'" + replacing(bytes, [](char c) { return c == '\'' ? "'\\''" : nullptr; }) + "'";
}

std::string desktopExecQuoted(std::string_view bytes) {
  const std::string argument = replacing(bytes, [](char c) -> const char* {
    switch (c) {
      case '"':
        return "\\\"";
      case '`':
        return "\\`";
      case '$':
        return "\\$";
      case '\\':
        return "\\\\";
      default:
        return nullptr;
    }
  });
  return keyFileEscaped("\"" + percentDoubled(argument) + "\"");
}

std::string keyFileEscaped(std::string_view bytes) {
  return replacing(bytes, [](char c) -> const char* {
    switch (c) {
      case '\\':
        return "\\\\";
      case '\n':
        return "\\n";
      case '\r':
        return "\\r";
      case '\t':
        return "\\t";
      default:
        return nullptr;
    }
  });
}

std::string xmlEscaped(std::string_view text) {
  return replacing(text, [](char c) -> const char* {
    switch (c) {
      case '&':
        return "&amp;";
      case '<':
        return "&lt;";
      case '>':
        return "&gt;";
      default:
        return nullptr;
    }
  });
}

std::string pythonBytes(std::string_view bytes) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string result = "b\"";
  for (const char c : bytes) {
    if (c == '"' || c == '\\') {
      result += {'\\', c};
    } else if (c >= ' ' && c <= '~') {
      result += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      result += {'\\', 'x', digits[byte >> 4U], digits[byte & 15U]};
    }
  }
  return result + "\"";
}

std::string percentDoubled(std::string_view bytes) {
  return replacing(bytes, [](char c) { return c == '%' ? "%%" : nullptr; });
}

}  // namespace tidemar
