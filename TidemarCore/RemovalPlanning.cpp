#include "TidemarCore/RemovalPlanning.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "TidemarCore/NameOrder.h"
#include "TidemarCore/SaturatingArithmetic.h"

namespace tidemar {
namespace {

std::vector<DatedItem> datedItemsOldestFirst(std::span<const Item> items) {
  std::vector<DatedItem> dated;
  dated.reserve(items.size());
  for (const Item& item : items) {
    if (item.freshness) dated.push_back({&item, *item.freshness});
  }
  sortByDateThenName(dated, &DatedItem::freshness);
  return dated;
}

std::int64_t countEarlierThan(Date cutoff, std::span<const DatedItem> list) {
  const auto firstThatStays = std::ranges::find_if_not(
      list, [&](const DatedItem& dated) { return dated.freshness < cutoff; });
  return firstThatStays - list.begin();
}

/// A tenth of the volume, rounded up to a whole byte.
std::int64_t targetCapacity(std::int64_t totalCapacity) {
  return static_cast<std::int64_t>(std::ceil(static_cast<double>(totalCapacity) * 0.1));
}

std::int64_t totalSize(std::span<const Item> items) {
  std::int64_t total = 0;
  for (const Item& item : items)
    total = addingSaturated(total, item.size);
  return total;
}

struct RuleCount {
  Rule rule;
  std::int64_t count;
};

/// How many of the oldest items each rule that is on takes.
std::vector<RuleCount> counts(const FolderSnapshot& snapshot, const TemporarySettings& settings,
                              const RunConditions& conditions, std::span<const DatedItem> list) {
  std::vector<RuleCount> result;
  if (settings.maxAgeDays) {
    const Date cutoff = conditions.now + static_cast<double>(*settings.maxAgeDays) * -secondsPerDay;
    result.push_back({Rule::age, countEarlierThan(cutoff, list)});
  }
  if (settings.emptyOnRestart && conditions.lastRunAt < conditions.bootTime) {
    result.push_back({Rule::emptyOnRestart, countEarlierThan(conditions.bootTime, list)});
  }
  if (settings.sizeLimit) {
    const std::int64_t excess =
        subtractingSaturated(totalSize(snapshot.items), *settings.sizeLimit);
    result.push_back({Rule::size, itemsToFree(excess, list)});
  }
  if (settings.automatic && settings.disposal == Disposal::delete_) {
    const std::int64_t missing = subtractingSaturated(targetCapacity(conditions.totalCapacity),
                                                      conditions.availableCapacity);
    result.push_back({Rule::automatic, itemsToFree(missing, list)});
  }
  return result;
}

}  // namespace

std::int64_t itemsToFree(std::int64_t bytes, std::span<const DatedItem> list) {
  std::int64_t freed = 0;
  std::int64_t taken = 0;
  for (const DatedItem& dated : list) {
    if (freed >= bytes) break;
    freed = addingSaturated(freed, dated.item->size);
    ++taken;
  }
  return taken;
}

std::vector<Removal> removalsDueNow(const FolderSnapshot& snapshot,
                                    const TemporarySettings& settings,
                                    const RunConditions& conditions) {
  if (!snapshot.isTagged || snapshot.isProtectedRoot) return {};

  const std::vector<DatedItem> list = datedItemsOldestFirst(snapshot.items);
  const std::vector<RuleCount> ruleCounts = counts(snapshot, settings, conditions, list);

  std::int64_t longest = 0;
  for (const RuleCount& ruleCount : ruleCounts)
    longest = std::max(longest, ruleCount.count);

  std::vector<Removal> removals;
  removals.reserve(static_cast<std::size_t>(longest));
  for (std::int64_t position = 0; position < longest; ++position) {
    RuleSet reasons;
    for (const RuleCount& ruleCount : ruleCounts) {
      if (ruleCount.count > position) reasons.insert(ruleCount.rule);
    }
    removals.push_back({list[static_cast<std::size_t>(position)].item, reasons});
  }
  return removals;
}

}  // namespace tidemar
