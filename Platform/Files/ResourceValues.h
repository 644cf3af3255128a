#pragma once

#include <cstdint>
#include <optional>

#include "TidemarCore/Date.h"

namespace tidemar {

/// What is known of one directory entry, of a link the link's own values. A value that could not be
/// had is missing, never 0.
struct ResourceValues {
  std::optional<bool> isDirectory;

  /// A directory that the user sees as one thing; told by the ending of its name alone.
  std::optional<bool> isPackage;

  /// The name begins with "." or stands in the `.hidden` file of its directory.
  std::optional<bool> isHidden;

  /// The later of change time and birth time: a rename into a directory moves the change time, so
  /// this is never earlier than the entry's coming. It can be too late (a change of mode counts),
  /// which only keeps an item longer. Missing for the root of a mount or subvolume.
  std::optional<Date> addedToDirectoryDate;

  /// The modification time. Missing for the root of a mount or subvolume.
  std::optional<Date> contentModificationDate;

  /// Bytes of storage that the entry itself takes.
  std::optional<std::int64_t> totalFileAllocatedSize;

  friend bool operator==(const ResourceValues&, const ResourceValues&) = default;
};

}  // namespace tidemar
