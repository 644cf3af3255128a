#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "TidemarCore/FolderSnapshot.h"
#include "TidemarCore/Item.h"
#include "TidemarCore/Rule.h"
#include "TidemarCore/TemporarySettings.h"

namespace tidemar {

/// An item that goes now, with all the rules that take it. `reasons` is never empty. Borrows the
/// item from the list that was planned.
struct Removal {
  const Item* item = nullptr;
  RuleSet reasons;

  friend bool operator==(const Removal& a, const Removal& b) {
    return *a.item == *b.item && a.reasons == b.reasons;
  }
};

/// An item that is known to have a date: the working element of planning. Borrows the item from the
/// snapshot.
struct DatedItem {
  const Item* item = nullptr;
  Date freshness;
};

/// The items that go now, oldest first; items of equal freshness in the order of their names. Empty
/// for a folder that isn't tagged or is a protected root. An item without a freshness never goes.
/// An item goes only together with everything older. Pure, and never fails.
std::vector<Removal> removalsDueNow(const FolderSnapshot& snapshot,
                                    const TemporarySettings& settings,
                                    const RunConditions& conditions);
std::vector<Removal> removalsDueNow(const FolderSnapshot&&, const TemporarySettings&,
                                    const RunConditions&) = delete;

/// How many items have to be taken from the front of `list` for their sizes to add up to `bytes` or
/// more: 0 for `bytes` of 0 or less, all of them if they fall short.
std::int64_t itemsToFree(std::int64_t bytes, std::span<const DatedItem> list);

}  // namespace tidemar

template <>
struct std::hash<tidemar::Removal> {
  std::size_t operator()(const tidemar::Removal& removal) const {
    return std::hash<tidemar::Item>{}(*removal.item) * 31 + removal.reasons.bits();
  }
};
