#include <limits>

#include <gtest/gtest.h>

#include "TidemarUI/State/DayWords.h"
#include "tests/support/Dates.h"

namespace tidemar {
namespace {

using testing::utc;

TEST(DayWords, FollowTheMidnightsOfTheUsersZone) {
  struct Row {
    const char* name;
    const char* zone;
    Date now;
    Date date;
    const char* phrase;
    const char* title;
  };
  const Row rows[] = {
      {"the last minute of today", "UTC", utc(2026, 11, 18, 0, 0), utc(2026, 11, 18, 23, 59),
       "today", "Today"},
      {"a minute later, over midnight", "UTC", utc(2026, 11, 18, 23, 59), utc(2026, 11, 19),
       "tomorrow", "Tomorrow"},
      {"the last minute of tomorrow", "UTC", utc(2026, 11, 18), utc(2026, 11, 19, 23, 59),
       "tomorrow", "Tomorrow"},
      {"the first minute behind tomorrow", "UTC", utc(2026, 11, 18, 23, 59), utc(2026, 11, 20),
       "in 2 days", "Fri, Nov 20"},
      {"earlier today", "UTC", utc(2026, 11, 18, 12), utc(2026, 11, 18, 1), "today", "Today"},
      {"a past day reads as today", "UTC", utc(2026, 11, 18, 12), utc(2026, 9, 1), "today",
       "Today"},
      {"more than a year off", "UTC", utc(2026, 11, 18), utc(2027, 12, 18), "in 395 days",
       "Sat, Dec 18"},
      {"tomorrow in the east while UTC still has today", "Asia/Tokyo", utc(2026, 11, 18, 14, 59),
       utc(2026, 11, 18, 15), "tomorrow", "Tomorrow"},
      {"today in the west while UTC has tomorrow", "America/Los_Angeles", utc(2026, 11, 18, 23),
       utc(2026, 11, 19, 7, 59), "today", "Today"},
      {"a date heading in the user's zone", "Asia/Tokyo", utc(2026, 11, 18, 12),
       utc(2026, 11, 19, 15), "in 2 days", "Fri, Nov 20"},
      {"23 hours to tomorrow's midnight in spring", "America/New_York", utc(2026, 3, 8, 5),
       utc(2026, 3, 9, 4), "tomorrow", "Tomorrow"},
      {"one minute less in spring", "America/New_York", utc(2026, 3, 8, 5), utc(2026, 3, 9, 3, 59),
       "today", "Today"},
      {"24 hours on, but still today, in autumn", "America/New_York", utc(2026, 11, 1, 4),
       utc(2026, 11, 2, 4), "today", "Today"},
      {"25 hours to tomorrow's midnight in autumn", "America/New_York", utc(2026, 11, 1, 4),
       utc(2026, 11, 2, 5), "tomorrow", "Tomorrow"},
      {"from a day whose midnight is skipped", "Asia/Beirut", utc(2026, 3, 28, 22),
       utc(2026, 3, 29, 21), "tomorrow", "Tomorrow"},
  };
  for (const Row& row : rows) {
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
}

TEST(DayWords, WriteTheDateAsTheLocaleDoes) {
  EXPECT_EQ(dayTitle(utc(2026, 11, 25), utc(2026, 11, 18), Formats("de_DE", "UTC")),
            "Mi., 25. Nov.");
}

TEST(DayWords, TakeADateThatCannotBeCountedForToday) {
  const Calendar calendar("UTC");
  const Date now = utc(2026, 11, 18);
  const Date never{std::numeric_limits<double>::quiet_NaN()};
  EXPECT_EQ(dayPhrase(never, now, calendar), "today");
  EXPECT_TRUE(DayAtDistance(0, now, calendar).contains(never));
  EXPECT_FALSE(DayAtDistance(1, now, calendar).contains(never));
}

}  // namespace
}  // namespace tidemar
