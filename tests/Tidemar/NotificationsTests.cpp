#include "FakeServices.h"

namespace tidemar::testing {
namespace {

using DailyNotification = ModelTest;
using Lines = std::vector<std::string>;

/// The date of an item that goes so many seconds from the start, 2027-01-15 08:00 UTC.
std::string going(double seconds) {
  return ModelWorld::aged(90 - seconds / secondsPerDay);
}

TEST_F(DailyNotification, ComesOnceADayOfUTCForEachFolderAboutTheUsersTomorrow) {
  calendar = Calendar("Pacific/Auckland");  // 13 hours ahead: its tomorrow begins in 3 hours.
  constexpr double hour = 3600;
  makeTemporary("/a", {"x" + going(4 * hour), "y" + going(26 * hour)});
  makeTemporary("/b", {"z" + going(20 * hour)});
  makeTemporary("/c", {"today" + going(2 * hour), "later" + going(60 * hour)});
  notifications.refuses = true;
  runCycle();
  EXPECT_EQ(notifications.attempts, 2);
  EXPECT_EQ(standardDefaults.string("notified.tomorrow.1"), std::nullopt);

  notifications.refuses = false;
  waitFor(model->resumeNotifications());
  const Lines delivered = {"tomorrow.1|a|2 items will go to the Bin tomorrow.",
                           "tomorrow.2|b|1 item will go to the Bin tomorrow."};
  EXPECT_EQ(notifications.delivered, delivered) << "it is tried again until it was taken";
  EXPECT_EQ(standardDefaults.string("notified.tomorrow.1"), "2027-01-15");
  for (int cycle = 0; cycle < 2; ++cycle) {
    runCycle();
    EXPECT_EQ(notifications.attempts, 4) << "the day's second cycle is quiet, in UTC's day";
    now = now + 3.5 * hour;
  }
}

}  // namespace
}  // namespace tidemar::testing
