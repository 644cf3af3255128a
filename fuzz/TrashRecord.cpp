#include "Platform/Files/Trash/TrashRecord.h"

#include <algorithm>
#include <string>

#include "fuzz/Check.h"

namespace tidemar::fuzz {
namespace {

constexpr std::time_t date = 1763763095;

bool goesUp(const std::string& path) {
  return path == ".." || path.starts_with("../") || path.ends_with("/..") ||
         path.find("/../") != std::string::npos;
}

void checkPath(const std::string& path) {
  const bool isRecordable = !path.empty() && path.find('\0') == std::string::npos && !goesUp(path);
  const auto read = pathInTrashRecord(trashRecordText(path, date));
  require(read == (isRecordable ? std::optional(path) : std::nullopt),
          "a record that is written holds the path, unless there is none such");
}

}  // namespace

void check(std::string_view input) {
  const std::string text(input);
  checkPath(text);
  const std::string otherGroup = "[Next]\nPath=/b\nDeletionDate=2025-11-21T22:11:35\n";
  require(pathInTrashRecord(text + "\n" + otherGroup) == pathInTrashRecord(text + "\n"),
          "another group has no say in the path");

  const auto path = pathInTrashRecord(text);
  if (!path) return;
  checkPath(*path);
  require(!path->empty() && !goesUp(*path), "a path that is read can be recorded");
  require(pathInTrashRecord(text + "\nPath=/b\n") == path, "a second path changes nothing");
  for (std::size_t cut = 1; cut <= std::min(text.size(), std::size_t{32}); ++cut) {
    const auto pathOfCut = pathInTrashRecord(text.substr(0, text.size() - cut));
    require(!pathOfCut || pathOfCut == path, "a record that is cut short has no other path");
  }
}

}  // namespace tidemar::fuzz
