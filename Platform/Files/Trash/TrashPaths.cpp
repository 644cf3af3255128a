#include "Platform/Files/Trash/TrashPaths.h"

#include <algorithm>
#include <string_view>

namespace tidemar {
namespace {

bool isUserNumber(std::string_view name) {
  return !name.empty() && std::ranges::all_of(name, [](char c) { return c >= '0' && c <= '9'; });
}

bool isTrashOfOneUser(std::string_view name) {
  constexpr std::string_view prefix = ".Trash-";
  return name.starts_with(prefix) && isUserNumber(name.substr(prefix.size()));
}

}  // namespace

bool isTrashFilesDirectory(const FileURL& url) {
  if (url.lastPathComponent() != "files") return false;
  const FileURL trash = url.deletingLastPathComponent();
  const std::string_view name = trash.lastPathComponent();
  if (name == "Trash" || isTrashOfOneUser(name)) return true;
  return isUserNumber(name) && trash.deletingLastPathComponent().lastPathComponent() == ".Trash";
}

bool liesInTrash(const FileURL& url) {
  std::string_view rest = url.path();
  std::string_view parent;
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find('/'), rest.size());
    const std::string_view name = rest.substr(0, end);
    if (name == ".Trash" || isTrashOfOneUser(name)) return true;
    if (name == "files" && parent == "Trash") return true;
    parent = name;
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return false;
}

}  // namespace tidemar
