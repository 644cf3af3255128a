#include "Platform/Files/KnownFolders.h"

#include <algorithm>
#include <utility>

#include "Platform/Files/Bookmarks/BookmarkRecord.h"

namespace tidemar {

KnownFolders::KnownFolders(std::vector<KnownFolder> folders) : _folders(std::move(folders)) {
  std::ranges::sort(_folders, {}, &KnownFolder::path);
  for (const KnownFolder& folder : _folders) {
    if (const auto remembered = decodeBookmark(folder.bookmark))
      _inodes.insert(remembered->directory.inode);
  }
}

std::span<const KnownFolder> KnownFolders::inside(const FileURL& directory) const {
  std::string front = directory.path();
  if (!front.ends_with('/')) front += '/';
  const auto frontOf = [&](const KnownFolder& folder) {
    return std::string_view(folder.path).substr(0, front.size());
  };
  const auto found = std::ranges::equal_range(_folders, std::string_view(front), {}, frontOf);
  return {found.begin(), found.end()};
}

}  // namespace tidemar
