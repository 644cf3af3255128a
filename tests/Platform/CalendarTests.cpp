#include <limits>
#include <optional>

#include <gtest/gtest.h>

#include "Platform/Locale/Calendar.h"
#include "tests/support/Dates.h"

namespace tidemar {
namespace {

using testing::utc;

TEST(Calendar, CountsMidnightsOfTheWallClock) {
  const struct {
    const char* name;
    const char* zone;
    Date from;
    Date to;
    std::int64_t days;
  } rows[] = {
      {"over midnight", "UTC", utc(2026, 3, 1, 23, 59), utc(2026, 3, 2), 1},
      {"back over midnight", "UTC", utc(2026, 3, 2), utc(2026, 3, 1, 23, 59), -1},
      {"before 1970", "UTC", utc(1969, 12, 31, 23, 59), utc(1970, 1, 1), 1},
      {"west", "America/Los_Angeles", utc(2026, 7, 1, 23, 59), utc(2026, 7, 2), 0},
      {"east", "Europe/Berlin", utc(2026, 7, 1, 21, 59), utc(2026, 7, 1, 22), 1},
      {"23 hours", "Europe/Berlin", utc(2026, 3, 28, 23), utc(2026, 3, 29, 22), 1},
      {"not yet 25 hours", "Europe/Berlin", utc(2026, 10, 24, 22), utc(2026, 10, 25, 22, 59), 0},
      {"25 hours", "Europe/Berlin", utc(2026, 10, 24, 22), utc(2026, 10, 25, 23), 1},
      {"begun at 1:00", "Asia/Beirut", utc(2026, 3, 28, 22), utc(2026, 3, 29, 21), 1},
      {"a day left out", "Pacific/Apia", utc(2011, 12, 30, 9, 59), utc(2011, 12, 30, 10), 2},
      {"an unknown zone is UTC", "Nowhere/Land", utc(2026, 7, 1, 23, 59), utc(2026, 7, 2), 1},
  };
  for (const auto& row : rows)
    EXPECT_EQ(Calendar(row.zone).dayDifference(row.from, row.to), row.days) << row.name;
}

TEST(Calendar, KnowsWhereADayBeginsAndEnds) {
  const struct {
    const char* name;
    const char* zone;
    Date date;
    std::int64_t daysLater;
    Date start;
    Date end;
  } rows[] = {
      {"earlier days", "UTC", utc(2026, 3, 1, 12), -1, utc(2026, 2, 28), utc(2026, 3, 1)},
      {"a day of 23 hours", "America/New_York", utc(2026, 3, 8, 12), 0, utc(2026, 3, 8, 5),
       utc(2026, 3, 9, 4)},
      {"a day of 25 hours", "America/New_York", utc(2026, 11, 1, 12), 0, utc(2026, 11, 1, 4),
       utc(2026, 11, 2, 5)},
      {"a week later, behind the change", "America/New_York", utc(2026, 3, 7, 12), 7,
       utc(2026, 3, 14, 4), utc(2026, 3, 15, 4)},
      {"midnight is skipped, so the day begins at 1:00", "Asia/Beirut", utc(2026, 3, 29, 12), 0,
       utc(2026, 3, 28, 22), utc(2026, 3, 29, 21)},
      {"which doesn't shift the midnights behind it", "Asia/Beirut", utc(2026, 3, 29, 12), 7,
       utc(2026, 4, 4, 21), utc(2026, 4, 5, 21)},
      {"midnight comes twice, and the first counts", "America/Havana", utc(2026, 11, 1, 12), 0,
       utc(2026, 11, 1, 4), utc(2026, 11, 2, 5)},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const auto day = Calendar(row.zone).day(row.date, row.daysLater);
    ASSERT_TRUE(day);
    EXPECT_EQ(day->start, row.start);
    EXPECT_EQ(day->end, row.end);
  }
}

TEST(Calendar, DoesNotFailForDatesThatNoOneCanCount) {
  const Calendar calendar("Europe/Berlin");
  const Date now = utc(2026, 1, 1);
  const double infinity = std::numeric_limits<double>::infinity();
  for (double seconds : {std::numeric_limits<double>::quiet_NaN(), infinity, -infinity, 1e300}) {
    EXPECT_EQ(calendar.dayDifference(now, {seconds}), std::nullopt) << seconds;
    EXPECT_EQ(calendar.day({seconds}), std::nullopt) << seconds;
  }
  EXPECT_EQ(calendar.day(now, std::numeric_limits<std::int64_t>::min()), std::nullopt);
  EXPECT_EQ(calendar.dayDifference(now, now + 1e9 * secondsPerDay), 1'000'000'000);
}

}  // namespace
}  // namespace tidemar
