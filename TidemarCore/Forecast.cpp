#include "TidemarCore/Forecast.h"

#include "TidemarCore/NameOrder.h"

namespace tidemar {

std::vector<Upcoming> upcomingRemovals(const FolderSnapshot& snapshot,
                                       const TemporarySettings& settings) {
  if (!snapshot.isTagged || snapshot.isProtectedRoot || !settings.maxAgeDays) return {};

  const double age = static_cast<double>(*settings.maxAgeDays) * secondsPerDay;
  std::vector<Upcoming> going;
  going.reserve(snapshot.items.size());
  for (const Item& item : snapshot.items) {
    if (item.freshness) going.push_back({&item, *item.freshness + age});
  }
  sortByDateThenName(going, &Upcoming::date);
  return going;
}

}  // namespace tidemar
