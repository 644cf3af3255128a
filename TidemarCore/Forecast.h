#pragma once

#include <vector>

#include "TidemarCore/FolderSnapshot.h"
#include "TidemarCore/Item.h"
#include "TidemarCore/TemporarySettings.h"

namespace tidemar {

/// An item with the date on which the age rule takes it: the last instant at which it still stays.
struct Upcoming {
  Item item;
  Date date;

  friend bool operator==(const Upcoming&, const Upcoming&) = default;
};

/// Every dated item with the date on which the age rule takes it, earliest first; items of equal
/// date in the order of their names. Dates may lie in the past, and there is no horizon. Empty for
/// a folder that isn't tagged, is a protected root or has no age rule; the other rules can't be
/// foretold. Pure, and never fails.
std::vector<Upcoming> upcomingRemovals(const FolderSnapshot& snapshot,
                                       const TemporarySettings& settings);

}  // namespace tidemar
