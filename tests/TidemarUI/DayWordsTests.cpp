#include "TidemarUI/State/DayWords.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

TEST(DayWords, FollowTheMidnightsOfTheUsersZone) {
  const struct {
    const char* name;
    const char* zone;
    Date now;
    Date date;
    const char* phrase;
    const char* title;
  } rows[] = {
      {"the last minute of today", "UTC", utc(2026, 11, 18), utc(2026, 11, 18, 23, 59), "today",
       "Today"},
      {"over midnight", "UTC", utc(2026, 11, 18, 23, 59), utc(2026, 11, 19), "tomorrow",
       "Tomorrow"},
      {"behind tomorrow", "UTC", utc(2026, 11, 18, 23, 59), utc(2026, 11, 20), "in 2 days",
       "Fri, Nov 20"},
      {"a past day", "UTC", utc(2026, 11, 18, 12), utc(2026, 9, 1), "today", "Today"},
      {"in the east", "Asia/Tokyo", utc(2026, 11, 18, 12), utc(2026, 11, 19, 15), "in 2 days",
       "Fri, Nov 20"},
      {"in the west", "America/Los_Angeles", utc(2026, 11, 18, 23), utc(2026, 11, 19, 7, 59),
       "today", "Today"},
      {"23 hours to a midnight in spring", "America/New_York", utc(2026, 3, 8, 5),
       utc(2026, 3, 9, 4), "tomorrow", "Tomorrow"},
      {"24 hours of the same day in autumn", "America/New_York", utc(2026, 11, 1, 4),
       utc(2026, 11, 2, 4), "today", "Today"},
      {"from a day whose midnight is skipped", "Asia/Beirut", utc(2026, 3, 28, 22),
       utc(2026, 3, 29, 21), "tomorrow", "Tomorrow"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const Formats formats("en_US", row.zone);
    EXPECT_EQ(dayPhrase(row.date, row.now, formats.calendar()), row.phrase);
    EXPECT_EQ(dayTitle(row.date, row.now, formats), row.title);
    // The two ways of counting days must agree.
    const std::int64_t distance = dayDistance(row.date, row.now, formats.calendar());
    for (std::int64_t other = distance - 1; other <= distance + 1; ++other) {
      EXPECT_EQ(DayAtDistance(other, row.now, formats.calendar()).contains(row.date),
                other == distance);
    }
  }
  // A date that can't be counted reads as today.
  const Date never{std::numeric_limits<double>::quiet_NaN()};
  const Calendar calendar("UTC");
  EXPECT_EQ(dayPhrase(never, utc(2026, 11, 18), calendar), "today");
  EXPECT_TRUE(DayAtDistance(0, utc(2026, 11, 18), calendar).contains(never));
  EXPECT_FALSE(DayAtDistance(1, utc(2026, 11, 18), calendar).contains(never));
}

}  // namespace
}  // namespace tidemar::testing
