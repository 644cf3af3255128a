#include "FakeServices.h"

namespace tidemar::testing {
namespace {

using DailyNotification = ModelTest;
using Lines = std::vector<std::string>;

/// The date of an item that goes so many seconds from the start, 2027-01-15 08:00 UTC.
std::string going(double seconds) {
  return ModelWorld::aged(90 - seconds / secondsPerDay);
}

TEST_F(DailyNotification, ComesOnceADayForEachFolder) {
  makeTemporary("/a", {"x" + going(secondsPerDay), "y" + going(1.5 * secondsPerDay)});
  makeTemporary("/b", {"z" + going(secondsPerDay)});
  makeTemporary("/c", {"today" + going(3600), "later" + going(2 * secondsPerDay)});
  notifications.refuses = true;
  runCycle();
  EXPECT_EQ(notifications.attempts, 2);
  EXPECT_EQ(standardDefaults.string("notified.tomorrow.1"), std::nullopt);

  notifications.refuses = false;
  waitFor(model->resumeNotifications());
  EXPECT_EQ(notifications.delivered, (Lines{"tomorrow.1|a|2 items will go to the Bin tomorrow.",
                                            "tomorrow.2|b|1 item will go to the Bin tomorrow."}))
      << "it is tried again until it was taken";
  EXPECT_EQ(standardDefaults.string("notified.tomorrow.1"), "2027-01-15");
  runCycle();
  EXPECT_EQ(notifications.attempts, 4) << "a second cycle of the day is quiet";
}

TEST_F(DailyNotification, TheStampFollowsUTCAndTheCountTheUsersDay) {
  calendar = Calendar("Pacific/Auckland");  // 13 hours ahead
  makeTemporary("/a", {"x" + going(20 * 3600)});
  now = now + 2 * 3600;  // 23:00 there on the 15th; the item goes on the local 16th
  runCycle();
  EXPECT_EQ(notifications.delivered.size(), 1U);
  EXPECT_EQ(standardDefaults.string("notified.tomorrow.1"), "2027-01-15");
  now = now + 2 * 3600;  // 01:00 there on the 16th: it goes today
  runCycle();
  EXPECT_EQ(notifications.delivered.size(), 1U);
}

}  // namespace
}  // namespace tidemar::testing
