#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tidemar {

/// One mount as this process sees it.
struct Mount {
  std::uint64_t id = 0;        ///< What statx calls the mount id.
  std::string mountPoint;      ///< In the file system's bytes, without links.
  std::string fileSystemType;  ///< "ext4" and its like.
  std::string source;          ///< The device or name that it was mounted from.

  friend bool operator==(const Mount&, const Mount&) = default;
};

/// The mounts in the order in which they were made, read anew from the kernel. Throws
/// PlatformError.
std::vector<Mount> readMountTable();

/// The mounts that a text in the format of proc_pid_mountinfo(5) lists. A line that isn't in that
/// format is passed over.
std::vector<Mount> parseMountTable(std::string_view text);

/// Whether this type of file system holds the kernel's own objects and no files of anyone.
bool isPseudoFileSystem(std::string_view type) noexcept;

}  // namespace tidemar
