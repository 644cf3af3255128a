#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Files/Descriptors/FileDescriptor.h"

namespace tidemar {

/// One mount as this process sees it.
struct Mount {
  std::uint64_t id = 0;        ///< What statx calls the mount id.
  std::string mountPoint;      ///< In the file system's bytes, without links.
  std::string root;            ///< The part of the file system that shows there: "/" for all of it.
  std::string fileSystemType;  ///< "ext4" and its like.
  std::string source;          ///< The device or name that it was mounted from.

  /// Whether this is what the user calls a volume: not a pseudo file system, and the whole of a
  /// file system or subvolume. A directory that is shown at a second place is none.
  bool isVolume = false;

  friend bool operator==(const Mount&, const Mount&) = default;
};

using Mounts = std::shared_ptr<const std::vector<Mount>>;

/// Knows the mounts, and asks the kernel for them again only when they have changed. Any thread.
class MountTableReader {
 public:
  /// The mounts as they are at this call, in the order in which they were made. Touches none of
  /// them, so that one that doesn't answer holds nothing up. Throws PlatformError.
  Mounts mounts();

 private:
  std::mutex _mutex;
  FileDescriptor _table;
  Mounts _mounts;
};

/// The mounts read once, as above.
std::vector<Mount> readMountTable();

/// The mounts that a text in the format of proc_pid_mountinfo(5) lists. A line that isn't in that
/// format is passed over.
std::vector<Mount> parseMountTable(std::string_view text);

}  // namespace tidemar
