#include "Tidemar/Model/FolderLink.h"

#include <string>

#include "Platform/Files/Trash/PercentEncoding.h"

namespace tidemar {
namespace {

/// Takes the text up to one of the delimiters off the front.
std::string_view takeUntil(std::string_view& text, std::string_view delimiters) {
  const std::string_view part = text.substr(0, text.find_first_of(delimiters));
  text.remove_prefix(part.size());
  return part;
}

}  // namespace

std::optional<FileURL> folderOfLink(std::string_view url) {
  constexpr std::string_view prefix = "tidemar://";
  if (url.size() > longestFolderLink || !url.starts_with(prefix)) return std::nullopt;
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
