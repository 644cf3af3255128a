#include "TidemarUI/State/Headlines.h"

#include <algorithm>
#include <vector>

#include "TidemarUI/State/Counts.h"
#include "TidemarUI/State/DayWords.h"

namespace tidemar {
namespace {

std::int64_t countOnDay(const DayAtDistance& day, const FolderStatus& status) {
  std::vector<bool> isDue(status.items.size());
  for (const Removal& removal : status.dueNow)
    isDue[status.items.indexOf(removal.item)] = true;
  return std::ranges::count_if(status.upcoming, [&](const Upcoming& upcoming) {
    return day.contains(upcoming.date) && !isDue[status.items.indexOf(upcoming.item)];
  });
}

}  // namespace

std::int64_t countOnDay(std::int64_t distance, std::span<const FolderStatus* const> statuses,
                        Date now, const Calendar& calendar) {
  const DayAtDistance day(distance, now, calendar);
  std::int64_t count = 0;
  for (const FolderStatus* status : statuses)
    count += countOnDay(day, *status);
  return count;
}

std::string forecastHeadline(std::int64_t dueNowCount,
                             const std::function<std::int64_t(std::int64_t)>& countOnDay) {
  if (dueNowCount >= 1) return itemsGo(dueNowCount, "now");
  if (const std::int64_t today = countOnDay(0); today >= 1) return itemsGo(today, "today");
  if (const std::int64_t tomorrow = countOnDay(1); tomorrow >= 1)
    return itemsGo(tomorrow, "tomorrow");
  return "Nothing goes today";
}

std::string previewHeadline(const FolderStatus& status, std::int64_t count, Date now,
                            const Calendar& calendar) {
  const auto dueCount = static_cast<std::int64_t>(status.dueNow.size());
  if (dueCount > 0 && count == dueCount) return itemsGo(count, "now");
  if (count >= 1) return itemsGo(count, "this week");
  std::string nothing = "Nothing goes this week.";
  if (status.upcoming.empty()) return nothing;
  return nothing + " The oldest item goes " +
         dayPhrase(status.upcoming.front().date, now, calendar) + ".";
}

}  // namespace tidemar
