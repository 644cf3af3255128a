#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// The kernel's name for a file, which a later file with the same inode number doesn't get.
struct FileHandle {
  std::int32_t type = 0;
  std::string bytes;  ///< At most `longestFileHandle`.

  friend bool operator==(const FileHandle&, const FileHandle&) = default;
};

inline constexpr std::size_t longestFileHandle = 128;

struct BirthTime {
  std::int64_t seconds = 0;
  std::uint32_t nanoseconds = 0;

  friend bool operator==(const BirthTime&, const BirthTime&) = default;
};

/// What tells a directory from all others of its file system, past and present, and stays when it
/// is renamed or moved and when the file system is mounted anew.
struct PersistentIdentity {
  std::uint64_t inode = 0;
  std::optional<BirthTime> birthTime;
  std::optional<FileHandle> handle;

  friend bool operator==(const PersistentIdentity&, const PersistentIdentity&) = default;
};

/// The identity of an open directory. Throws PlatformError, made of the operation and the item for
/// which it is asked.
PersistentIdentity persistentIdentity(int directory, const FileURL& url,
                                      const std::string& operation);

/// Whether two identities are surely those of one directory. Equal inode numbers alone aren't
/// enough, since file systems reuse them at once.
bool isSameDirectory(const PersistentIdentity& a, const PersistentIdentity& b) noexcept;

}  // namespace tidemar
