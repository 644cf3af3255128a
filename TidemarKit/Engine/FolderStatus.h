#pragma once

#include <cstdint>
#include <vector>

#include "TidemarCore/FileURL.h"
#include "TidemarCore/FolderSnapshot.h"
#include "TidemarCore/Forecast.h"
#include "TidemarCore/Item.h"
#include "TidemarCore/RemovalPlanning.h"
#include "TidemarCore/TemporarySettings.h"

namespace tidemar {

/// What was read of a folder at one moment, with the plan that follows from it.
struct FolderStatus {
  FileURL url;                     ///< The folder as its bookmark resolves now.
  bool isTagged = false;           ///< It carries the tag "Tidemar: Temporary".
  bool isProtectedRoot = false;    ///< It is never cleared.
  ItemList items;                  ///< In listing order.
  std::vector<Removal> dueNow;     ///< What goes now, oldest first.
  std::vector<Upcoming> upcoming;  ///< What the age rule will take, earliest first.
  RunConditions conditions;        ///< Under which it was planned.

  /// Bytes of all items; held at the end of the 64-bit range.
  std::int64_t totalSize() const noexcept;

  friend bool operator==(const FolderStatus&, const FolderStatus&) = default;
};

/// What these rules take of what was read of a folder at that place. Pure, and never fails.
FolderStatus plannedStatus(FileURL url, FolderSnapshot snapshot, const TemporarySettings& settings,
                           const RunConditions& conditions);

}  // namespace tidemar
