#include "TidemarCore/Forecast.h"

#include "TidemarCore/NameOrder.h"

namespace tidemar {

std::vector<Upcoming> upcomingRemovals(const FolderSnapshot& snapshot,
                                       const TemporarySettings& settings) {
  if (!snapshot.isTagged || snapshot.isProtectedRoot || !settings.maxAgeDays) return {};

  struct GoingItem {
    const Item* item;
    Date date;
  };
  const double age = static_cast<double>(*settings.maxAgeDays) * secondsPerDay;
  std::vector<GoingItem> going;
  going.reserve(snapshot.items.size());
  for (const Item& item : snapshot.items) {
    if (item.freshness) going.push_back({&item, *item.freshness + age});
  }
  sortByDateThenName(going, &GoingItem::date);

  std::vector<Upcoming> result;
  result.reserve(going.size());
  for (const GoingItem& element : going)
    result.push_back({*element.item, element.date});
  return result;
}

}  // namespace tidemar
