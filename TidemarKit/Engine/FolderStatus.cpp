#include "TidemarKit/Engine/FolderStatus.h"

#include <utility>

#include "TidemarCore/SaturatingArithmetic.h"

namespace tidemar {

std::int64_t FolderStatus::totalSize() const noexcept {
  std::int64_t total = 0;
  for (const Item& item : items)
    total = addingSaturated(total, item.size);
  return total;
}

FolderStatus plannedStatus(FileURL url, FolderSnapshot snapshot, const TemporarySettings& settings,
                           const RunConditions& conditions) {
  FolderStatus status;
  status.url = std::move(url);
  status.isTagged = snapshot.isTagged;
  status.isProtectedRoot = snapshot.isProtectedRoot;
  status.dueNow = removalsDueNow(snapshot, settings, conditions);
  status.upcoming = upcomingRemovals(snapshot, settings);
  status.items = std::move(snapshot.items);
  status.conditions = conditions;
  return status;
}

}  // namespace tidemar
