#include "Platform/Files/Trash/TrashPaths.h"

#include <algorithm>
#include <cerrno>
#include <string_view>

#include "Platform/Files/Descriptors/DescriptorPath.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

constexpr const char* findOperation = "find";

bool isUserNumber(std::string_view name) {
  return !name.empty() && std::ranges::all_of(name, [](char c) { return c >= '0' && c <= '9'; });
}

bool isTrashOfOneUser(std::string_view name) {
  constexpr std::string_view prefix = ".Trash-";
  return name.starts_with(prefix) && isUserNumber(name.substr(prefix.size()));
}

}  // namespace

bool liesInTrash(const FileURL& url) {
  const std::string path = url.path();
  std::string_view rest = path;
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

FileURL placeOutsideTrash(int folder, const FileURL& url) {
  FileURL place = pathOfDescriptor(folder, url, findOperation);
  if (!leadsTo(place, folder)) {
    throw PlatformError(findOperation, url, ENOENT, "it was deleted, or its drive was taken away");
  }
  if (liesInTrash(place)) throw PlatformError(findOperation, url, ENOENT, "it lies in the Bin");
  return place;
}

}  // namespace tidemar
