#include <gtest/gtest.h>

#include "FakeServices.h"

namespace tidemar {
namespace {

using namespace testing;
using Lines = std::vector<std::string>;

/// 2027-01-15 08:00 UTC.
constexpr double morning = ModelWorld::start;

/// An item that goes so many seconds from the beginning of the test.
std::string going(double seconds) {
  return " @" + std::to_string(static_cast<std::int64_t>(morning + seconds - 90 * secondsPerDay));
}

TEST(DailyNotification, ComesOnceADayForEachFolder) {
  ModelWorld world;
  world.disk.draw("/a/\n  x" + going(secondsPerDay) + "\n  y" + going(1.5 * secondsPerDay) +
                  "\n/b/\n  z" + going(secondsPerDay) + "\n/c/\n  today" + going(3600) +
                  "\n  later" + going(2 * secondsPerDay));
  for (const char* path : {"/a", "/b", "/c"})
    world.makeTemporary(path);
  world.runCycle();
  EXPECT_EQ(world.notifications.delivered,
            (Lines{"tomorrow.1|a|2 items will go to the Bin tomorrow.",
                   "tomorrow.2|b|1 item will go to the Bin tomorrow."}));
  world.runCycle();
  EXPECT_EQ(world.notifications.attempts, 2) << "a second cycle of the day is quiet";
}

TEST(DailyNotification, IsTriedAgainUntilItWasTaken) {
  ModelWorld world;
  world.disk.draw("/a/\n  x" + going(secondsPerDay));
  world.makeTemporary("/a");
  world.notifications.refuses = true;
  world.runCycle();
  EXPECT_EQ(world.standardDefaults.string("notified.tomorrow.1"), std::nullopt);
  world.notifications.refuses = false;
  world.runCycle();
  EXPECT_EQ(world.notifications.attempts, 2);
  EXPECT_EQ(world.standardDefaults.string("notified.tomorrow.1"), "2027-01-15");
}

TEST(DailyNotification, TheStampFollowsUTCAndTheCountTheUsersDay) {
  ModelWorld world;
  world.calendar =
      Calendar("Pacific/Auckland");  // 13 hours ahead: the local day began at 11:00 UTC of the 14th
  world.disk.draw("/a/\n  x" + going(20 * 3600));
  world.makeTemporary("/a");
  world.now = morning + 2 * 3600;  // 23:00 local time of the 15th; the item goes on the local 16th
  world.runCycle();
  EXPECT_EQ(world.notifications.delivered.size(), 1U);
  EXPECT_EQ(world.standardDefaults.string("notified.tomorrow.1"), "2027-01-15");
  world.now = morning + 4 * 3600;  // 01:00 local time of the 16th: it goes today
  world.runCycle();
  EXPECT_EQ(world.notifications.delivered.size(), 1U);
}

}  // namespace
}  // namespace tidemar
