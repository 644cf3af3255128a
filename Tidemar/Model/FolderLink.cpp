#include "Tidemar/Model/FolderLink.h"

#include <algorithm>
#include <charconv>
#include <string>

namespace tidemar {
namespace {

constexpr std::size_t longestURL = 64 * 1024;

std::optional<std::string> percentDecoded(std::string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      bytes += text[i];
      continue;
    }
    const std::string_view digits = text.substr(i + 1, 2);
    unsigned value = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    if (digits.size() != 2 || error != std::errc() || end != digits.data() + 2) return std::nullopt;
    bytes += static_cast<char>(value);
    i += 2;
  }
  return bytes;
}

/// Takes the text up to one of the delimiters off the front.
std::string_view takeUntil(std::string_view& text, std::string_view delimiters) {
  const std::string_view part = text.substr(0, text.find_first_of(delimiters));
  text.remove_prefix(part.size());
  return part;
}

}  // namespace

std::optional<FileURL> folderOfLink(std::string_view url) {
  constexpr std::string_view prefix = "tidemar://";
  if (url.size() > longestURL || !url.starts_with(prefix)) return std::nullopt;
  url.remove_prefix(prefix.size());
  if (takeUntil(url, "/?#") != "folder") return std::nullopt;
  takeUntil(url, "?#");
  if (!url.starts_with('?')) return std::nullopt;
  std::string_view query = takeUntil(url, "#");

  while (!query.empty()) {
    query.remove_prefix(1);  // the "?" or "&" in front of the item
    std::string_view item = takeUntil(query, "&");
    const auto name = percentDecoded(takeUntil(item, "="));
    if (!name) return std::nullopt;
    if (*name != "path") continue;

    if (item.empty()) return std::nullopt;
    auto path = percentDecoded(item.substr(1));
    if (!path || !path->starts_with('/') || path->find('\0') != std::string::npos)
      return std::nullopt;
    return FileURL(std::move(*path));
  }
  return std::nullopt;
}

}  // namespace tidemar
