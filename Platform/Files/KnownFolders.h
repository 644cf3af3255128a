#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <unordered_set>
#include <vector>

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// A folder that the program knows.
struct KnownFolder {
  std::string bookmark;
  std::string path;
};

/// All folders that the program knew at one moment, made ready for readings that look for any of
/// them in what they read: one reading costs no more for many of them. Never changes; any thread.
class KnownFolders {
 public:
  KnownFolders() = default;
  explicit KnownFolders(std::vector<KnownFolder> folders);

  /// In the order of their paths.
  std::span<const KnownFolder> all() const noexcept { return _folders; }

  /// Those whose paths lie in a directory, however deep.
  std::span<const KnownFolder> inside(const FileURL& directory) const;

  /// The inode numbers by which their bookmarks remember them, of whatever file system.
  const std::unordered_set<std::uint64_t>& inodes() const noexcept { return _inodes; }

 private:
  std::vector<KnownFolder> _folders;
  std::unordered_set<std::uint64_t> _inodes;
};

}  // namespace tidemar
