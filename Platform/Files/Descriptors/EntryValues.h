#pragma once

#include <cstdint>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>

#include "Platform/Files/ItemState.h"
#include "Platform/Files/ResourceValues.h"
#include "TidemarCore/Date.h"

namespace tidemar {

/// The one set of values that is asked of the kernel for an entry, and what this layer makes of it.
using EntryValues = struct statx;

/// Reads an entry by its name in a directory, or with an empty name the open descriptor itself.
/// Follows no link and sets off no automount. Answers 0, or an errno value.
int readEntryValues(int directory, const char* name, EntryValues& values) noexcept;

/// Reads what lies at a path, links followed. Sets off no automount. Answers as above.
int readValuesAt(const char* path, EntryValues& values) noexcept;

bool isDirectory(const EntryValues& values) noexcept;

/// Which directory this is, for as long as it exists.
struct DirectoryIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::uint64_t mount = 0;

  friend bool operator==(const DirectoryIdentity&, const DirectoryIdentity&) = default;
};

DirectoryIdentity identityOf(const EntryValues& values) noexcept;

/// Whether both are one directory, seen through one mount or two.
bool isSameDirectory(const EntryValues& a, const EntryValues& b) noexcept;

/// Whether an entry is the root of another mount or subvolume than the directory it was met in.
bool isBoundary(const EntryValues& entry, const DirectoryIdentity& directory) noexcept;

Timestamp modificationTime(const EntryValues& values) noexcept;
Timestamp changeTime(const EntryValues& values) noexcept;

/// The present by the clock by which the kernel dates changes. It moves in steps of a few
/// milliseconds.
Timestamp clockOfFiles() noexcept;

/// What tells this entry and its content from every other.
EntryIdentity entryIdentity(const EntryValues& values) noexcept;

Date modificationDate(const EntryValues& values) noexcept;

/// The later of change time and birth time.
Date addedDate(const EntryValues& values) noexcept;

/// Whether a directory of this name is one thing to the user: an AppDir, a photo library or a rich
/// text with pictures, by its ending in any case.
bool isPackageName(std::string_view name) noexcept;

/// The values of an entry as the rest of the program sees them. At a boundary there are no dates.
ResourceValues resourceValues(const EntryValues& entry, std::string_view name, bool isHidden,
                              bool isBoundary);

}  // namespace tidemar
