#include "FakeServices.h"

namespace tidemar::testing {
namespace {

using Lines = std::vector<std::string>;

/// The date of an item that goes so many seconds from the start, 2027-01-15 08:00 UTC.
std::string going(double seconds) {
  return ModelWorld::aged(90 - seconds / secondsPerDay);
}

TEST(DailyNotification, ComesOnceADayForEachFolder) {
  ModelWorld world;
  world.makeTemporary("/a", {"x" + going(secondsPerDay), "y" + going(1.5 * secondsPerDay)});
  world.makeTemporary("/b", {"z" + going(secondsPerDay)});
  world.makeTemporary("/c", {"today" + going(3600), "later" + going(2 * secondsPerDay)});
  world.notifications.refuses = true;
  world.runCycle();
  EXPECT_EQ(world.notifications.attempts, 2);
  EXPECT_EQ(world.standardDefaults.string("notified.tomorrow.1"), std::nullopt);

  world.notifications.refuses = false;
  QCoro::waitFor(world.model->resumeNotifications());
  EXPECT_EQ(world.notifications.delivered,
            (Lines{"tomorrow.1|a|2 items will go to the Bin tomorrow.",
                   "tomorrow.2|b|1 item will go to the Bin tomorrow."}))
      << "it is tried again until it was taken";
  EXPECT_EQ(world.standardDefaults.string("notified.tomorrow.1"), "2027-01-15");
  world.runCycle();
  EXPECT_EQ(world.notifications.attempts, 4) << "a second cycle of the day is quiet";
}

TEST(DailyNotification, TheStampFollowsUTCAndTheCountTheUsersDay) {
  ModelWorld world;
  world.calendar = Calendar("Pacific/Auckland");  // 13 hours ahead
  world.makeTemporary("/a", {"x" + going(20 * 3600)});
  world.now = world.now + 2 * 3600;  // 23:00 there on the 15th; the item goes on the local 16th
  world.runCycle();
  EXPECT_EQ(world.notifications.delivered.size(), 1U);
  EXPECT_EQ(world.standardDefaults.string("notified.tomorrow.1"), "2027-01-15");
  world.now = world.now + 2 * 3600;  // 01:00 there on the 16th: it goes today
  world.runCycle();
  EXPECT_EQ(world.notifications.delivered.size(), 1U);
}

}  // namespace
}  // namespace tidemar::testing
