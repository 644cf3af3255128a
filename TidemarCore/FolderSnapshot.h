#pragma once

#include <cstdint>

#include "TidemarCore/Date.h"
#include "TidemarCore/Item.h"

namespace tidemar {

/// What was read of a folder for one planning pass.
struct FolderSnapshot {
  bool isTagged = false;         ///< The folder carries the Temporary tag.
  bool isProtectedRoot = false;  ///< The folder is one that is never cleared.
  ItemList items;                ///< Its top-level items, in the order of the listing.

  friend bool operator==(const FolderSnapshot&, const FolderSnapshot&) = default;
};

/// The facts of the moment for one planning pass.
struct RunConditions {
  Date now;
  std::int64_t availableCapacity = 0;  ///< Free bytes of the folder's volume.
  std::int64_t totalCapacity = 0;      ///< All bytes of the folder's volume.
  Date bootTime;                       ///< When the computer last started.
  Date lastRunAt;                      ///< The folder's last run.

  friend bool operator==(const RunConditions&, const RunConditions&) = default;
};

}  // namespace tidemar
