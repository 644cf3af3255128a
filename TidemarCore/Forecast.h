#pragma once

#include <vector>

#include "TidemarCore/FolderSnapshot.h"
#include "TidemarCore/Item.h"
#include "TidemarCore/TemporarySettings.h"

namespace tidemar {

/// An item with the date on which the age rule takes it: the last instant at which it still stays.
/// Borrows the item from the list that was planned.
struct Upcoming {
  const Item* item = nullptr;
  Date date;

  friend bool operator==(const Upcoming& a, const Upcoming& b) {
    return *a.item == *b.item && a.date == b.date;
  }
};

/// Every dated item with the date on which the age rule takes it, earliest first; items of equal
/// date in the order of their names. Dates may lie in the past, and there is no horizon. Empty for
/// a folder that isn't tagged, is a protected root or has no age rule; the other rules can't be
/// foretold. Pure, and never fails.
std::vector<Upcoming> upcomingRemovals(const FolderSnapshot& snapshot,
                                       const TemporarySettings& settings);
std::vector<Upcoming> upcomingRemovals(const FolderSnapshot&&, const TemporarySettings&) = delete;

}  // namespace tidemar
