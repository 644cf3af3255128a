#include <optional>

#include <gtest/gtest.h>

#include "TidemarUI/State/TomorrowNotification.h"
#include "tests/TidemarUI/Samples.h"
#include "tests/support/Dates.h"

namespace tidemar {
namespace {

using namespace testing;

TEST(TomorrowNotification, TellsWhatGoesOnTheUsersTomorrow) {
  const Date now = utc(2026, 11, 16, 12);
  const FolderStatus one = taggedStatus({}, {going("a", utc(2026, 11, 17, 8))});
  const FolderStatus many = taggedStatus(
      {}, {going("today", utc(2026, 11, 16, 23, 59)), going("a", utc(2026, 11, 17, 0, 10)),
           going("b", utc(2026, 11, 17, 23, 50)), going("after", utc(2026, 11, 18))});
  struct Row {
    const char* name;
    FolderReport report;
    const char* body;  // Null where nothing is told.
  };
  const Row rows[] = {
      {"one item", sampleReport(12, one), "1 item will go to the Trash tomorrow."},
      {"any time of tomorrow", sampleReport(12, many), "2 items will go to the Trash tomorrow."},
      {"deleting", sampleReport(12, one, deleting()),
       "1 item will be deleted permanently tomorrow."},
      {"deleting more", sampleReport(12, many, deleting()),
       "2 items will be deleted permanently tomorrow."},
      {"an item that is due counts by its date all the same",
       sampleReport(12, taggedStatus({due("a")}, {going("a", utc(2026, 11, 17))})),
       "1 item will go to the Trash tomorrow."},
      {"today and in two days alone",
       sampleReport(12, taggedStatus({due("x")}, {going("a", now), going("b", utc(2026, 11, 18))})),
       nullptr},
      {"nothing foretold", sampleReport(12, taggedStatus({due("x")}, {})), nullptr},
      {"unreadable", sampleReport(12, std::nullopt), nullptr},
      {"without an id", sampleReport(std::nullopt, one), nullptr},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const auto notification = tomorrowNotification(row.report, now, Calendar("UTC"), "Trash");
    ASSERT_EQ(notification.has_value(), row.body != nullptr);
    EXPECT_TRUE(!notification || mayGoTomorrow(row.report, now));
    if (notification) {
      EXPECT_EQ(*notification, (TomorrowNotification{"tomorrow.12", "Downloads", row.body}));
    }
  }
}

TEST(TomorrowNotification, StampsUTCsDayWhileItCountsTheUsers) {
  // 00:30 on the 17th in Berlin, where tomorrow is the 18th; UTC still has the 16th.
  const Date now = utc(2026, 11, 16, 23, 30);
  const Calendar berlin("Europe/Berlin");
  const auto at = [&](Date date) {
    return tomorrowNotification(sampleReport(1, taggedStatus({}, {going("a", date)})), now, berlin,
                                "Bin");
  };
  EXPECT_EQ(notificationStamp(now), "2026-11-16");
  EXPECT_FALSE(at(utc(2026, 11, 17, 22, 59)));
  EXPECT_TRUE(at(utc(2026, 11, 17, 23)));
  EXPECT_TRUE(at(utc(2026, 11, 18, 22, 59)));
  const auto mayGo = [&](Date date) {
    return mayGoTomorrow(
        sampleReport(1, taggedStatus({}, {going("past", now - 1), going("a", date)})), now);
  };
  EXPECT_TRUE(mayGo(utc(2026, 11, 18, 22, 59)));
  EXPECT_FALSE(mayGo(utc(2026, 11, 20)));
  // Within one day of the user's the stamp changes at UTC's midnight.
  EXPECT_EQ(notificationStamp(now + 1799), "2026-11-16");
  EXPECT_EQ(notificationStamp(now + 1800), "2026-11-17");
  EXPECT_EQ(notificationStamp(utc(2027, 1, 2) - 0.001), "2027-01-01");
  EXPECT_EQ(notificationStampKey("tomorrow.1"), "notified.tomorrow.1");
}

}  // namespace
}  // namespace tidemar
