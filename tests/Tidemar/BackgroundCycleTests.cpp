#include <QTimer>
#include <future>

#include "FakeServices.h"
#include "Tidemar/Model/WaitingPool.h"

namespace tidemar::testing {
namespace {

using BackgroundCycle = ModelTest;

const std::string old = ModelWorld::aged(91);
const std::string young = ModelWorld::aged(1);

TEST_F(BackgroundCycle, ClearsWhatIsOldAndReadsTheResultWhereItMayDiffer) {
  makeTemporary("/a", {"young" + young});
  makeTemporary("/b", {"old 10" + old, "new 10" + young});
  EXPECT_EQ(disk.names("/b"), "old new") << "making a folder Temporary clears nothing yet";
  disk.operations().clear();
  auto cycle = model->runBackgroundCycle();
  waitFor(model->runBackgroundCycle());
  EXPECT_FALSE(cycle.isReady()) << "a second trigger must not wait for the first cycle";
  waitFor(std::move(cycle));
  EXPECT_EQ(disk.names("/b"), "new");
  EXPECT_EQ(removedNames(), "old");
  EXPECT_EQ(model->reports().at(1).status->items.size(), 1U);
  EXPECT_EQ(model->freeSpace(), 500);
  // Before the run, in it and, where something went, after it; the second trigger does nothing.
  EXPECT_EQ(std::ranges::count(disk.operations(), "list /a"), 2);
  EXPECT_EQ(std::ranges::count(disk.operations(), "list /b"), 3);

  disk.draw("/b/older" + old);
  std::optional<QCoro::Task<void>> refresh;
  disk.before("trash /b/older", [&] {
    disk.draw("/a/later" + young);
    refresh.emplace(model->refreshReports());
  });
  runCycle();
  EXPECT_TRUE(refresh && refresh->isReady());
  EXPECT_EQ(model->reports().at(0).status->items.size(), 2U) << "another reading saw more";
}

TEST_F(BackgroundCycle, AFolderThatFailsCostsOnlyItselfAndAllShareOneDate) {
  for (const char* path : {"/a", "/b", "/c"})
    makeTemporary(path, {"old" + old});
  disk.fail("list /b", EIO);
  now = start + 10;
  disk.before("list /a", [&] { now = start + 5000; });

  runCycle();
  EXPECT_EQ(disk.names("/a") + disk.names("/b") + disk.names("/c"), "old");
  const auto reports = model->reports();
  ASSERT_EQ(reports.size(), 3U);
  EXPECT_FALSE(reports[1].status);
  EXPECT_EQ(reports[1].folder.lastRunAt, Date{start}) << "the restart rule isn't done";
  for (const std::size_t index : {0, 2}) {
    EXPECT_TRUE(reports[index].status);
    EXPECT_EQ(reports[index].folder.lastRunAt, Date{start + 10});
  }
  ASSERT_EQ(model->journal().size(), 2U);
  for (const JournalEntry& entry : model->journal())
    EXPECT_EQ(entry.performedAt, Date{start + 10});
  EXPECT_TRUE(alerts.told.empty()) << "a cycle tells the user nothing";
}

TEST_F(BackgroundCycle, WhatARunCouldNotRemoveIsKnownUntilARunCan) {
  makeTemporary("/a", {"old" + old});
  disk.before("trash /a/old", [] { throw PlatformError("remove", FileURL("/a/old"), EPERM); });
  runCycle();
  const std::vector<LeftItem> left = model->reports().at(0).left;
  ASSERT_EQ(left.size(), 1U);
  EXPECT_EQ(left[0].url, FileURL("/a/old"));
  EXPECT_NE(left[0].reason.find("not permitted"), std::string::npos) << left[0].reason;
  runCycle();
  EXPECT_TRUE(model->reports().at(0).left.empty());
}

TEST_F(BackgroundCycle, AFolderThatIsRemovedMeanwhileAndAnEndInPeaceAreNoFailures) {
  if (access("/run/systemd/journal/socket", W_OK) == 0)
    GTEST_SKIP() << "the log goes to this machine's journal and can't be read here";
  makeTemporary("/a", {"old" + old});
  const std::int64_t second = makeTemporary("/b");
  std::optional<QCoro::Task<void>> removal;
  disk.before("trash /a/old", [&] {
    removal.emplace(model->removeFolder(model->reportForFolder(second)->folder));
  });
  ::testing::internal::CaptureStderr();
  runCycle();
  model->stopClearing();
  const std::string log = ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(log.find("error"), std::string::npos) << log;
  EXPECT_EQ(model->reports().size(), 1U);
}

TEST_F(BackgroundCycle, NoFailureIsSilentOrTheLastCycle) {
  if (access("/run/systemd/journal/socket", W_OK) == 0)
    GTEST_SKIP() << "the log goes to this machine's journal and can't be read here";
  const auto store = [this](const char* disposal) {
    runSQL(directory.path("data/Tidemar/tidemar.sqlite"),
           std::string("UPDATE folder SET disposal = '") + disposal + "'");
  };
  const auto throwBefore = [this](const char* operation) {
    return [=, this] { disk.before(operation, [] { throw 42; }); };
  };
  // A row that isn't understood, and an exception of no known kind, while reading and in a run.
  const std::pair<std::function<void()>, std::vector<const char*>> rows[] = {
      {[&] { store("burn"); },
       {"Couldn't read the folders: ", "Run of folder 1 failed: Unknown disposal burn"}},
      {throwBefore("list /f"), {"Couldn't read folder 1: Something unexpected happened."}},
      {throwBefore("trash /f/old"), {"Run of folder 1 failed: Something unexpected happened."}},
  };
  makeTemporary("/f");
  for (const auto& [spoil, lines] : rows) {
    disk.draw("/f/old" + old);
    spoil();
    ::testing::internal::CaptureStderr();
    runCycle();
    const std::string log = ::testing::internal::GetCapturedStderr();
    for (const char* line : lines)
      EXPECT_NE(log.find(line), std::string::npos) << line << "\n" << log;
    EXPECT_EQ(disk.names("/f"), "old");
    store("bin");
    runCycle();
    EXPECT_EQ(disk.names("/f"), "");
  }
}

TEST(ClockCheck, AClockThatWasSetFarOffClearsNothingForAnHour) {
  constexpr double step = 100 * secondsPerDay;
  for (const bool isSleep : {false, true}) {
    ModelWorld world;
    world.makeTemporary("/f", {"item" + young});
    world.runCycle();
    // A computer that slept for as long moves both clocks.
    world.clockStep = isSleep ? 0 : step;
    for (const double minutes : {0, 30, 58, 60}) {
      world.now = ModelWorld::start + step + minutes * 60;
      world.runCycle();
      EXPECT_EQ(world.disk.names("/f"), isSleep || minutes == 60 ? "" : "item") << minutes;
    }
  }
  // At a start all that can be told is how far the clock is ahead of what is known.
  for (const int days : {365, 367}) {
    ModelWorld world;
    world.makeTemporary("/f", {"item" + young});
    world.now = ModelWorld::start + days * secondsPerDay;
    world.runCycle();
    EXPECT_EQ(world.disk.names("/f"), days == 367 ? "item" : "");
  }
}

TEST(CycleOnAThread, SlowFilesLeaveTheMainThreadFree) {
  WaitingPool pool(1);
  ModelWorld world(&pool);
  world.makeTemporary("/f", {"old" + old});

  // The disk answers only once the main thread has run its event loop.
  std::promise<void> mainThreadIsFree;
  auto isFree = mainThreadIsFree.get_future();
  bool wasFree = false;
  world.disk.before("trash /f/old", [&] {
    wasFree = isFree.wait_for(std::chrono::seconds(20)) == std::future_status::ready;
  });
  QTimer::singleShot(0, [&] { mainThreadIsFree.set_value(); });
  world.runCycle();
  EXPECT_TRUE(wasFree);
  EXPECT_EQ(world.removedNames(), "old");
}

TEST(CycleOnAThread, StoppingEndsARunBetweenTwoItemsAndWaitsForItsEnd) {
  WaitingPool pool(1);
  ModelWorld world(&pool);
  world.makeTemporary("/f", {"a" + world.aged(94), "b" + world.aged(93), "c" + world.aged(92)});

  std::jthread stopper;
  std::promise<void> isStopped;
  world.disk.before("trash /f/b", [&] {
    stopper = std::jthread([&] {
      world.model->stopClearing();
      isStopped.set_value();
    });
    // While an item is in hand the stop has to wait.
    EXPECT_EQ(isStopped.get_future().wait_for(std::chrono::milliseconds(100)),
              std::future_status::timeout);
  });
  world.runCycle();
  stopper.join();
  EXPECT_EQ(world.removedNames(), "a b");
  EXPECT_EQ(world.model->reports().at(0).folder.lastRunAt, Date{ModelWorld::start});

  world.runCycle();
  EXPECT_EQ(world.disk.names("/f"), "c") << "nothing is cleared after the stop";
}

TEST_F(BackgroundCycle, AFirstLaunchMakesAPrivateDatabase) {
  struct stat values {};
  ASSERT_EQ(stat(directory.path("data/Tidemar").c_str(), &values), 0);
  EXPECT_EQ(values.st_mode & 0777, 0700U);
  ASSERT_EQ(stat(directory.path("data/Tidemar/tidemar.sqlite").c_str(), &values), 0);
  EXPECT_EQ(values.st_mode & 0777, 0600U);
}

TEST_F(BackgroundCycle, TheJournalHoldsSevenDaysAndIsPublishedOnlyWhenItChanges) {
  makeTemporary("/f", {"old" + old});
  int changes = 0;
  QObject::connect(model.get(), &AppModel::journalChanged, [&] { ++changes; });
  runCycle();
  now = start + 7 * secondsPerDay;
  waitFor(model->refreshReports());
  EXPECT_EQ(removedNames(), "old") << "an entry of exactly seven days is still shown";
  EXPECT_EQ(changes, 1);
  now = start + 7 * secondsPerDay + 1;
  waitFor(model->refreshReports());
  EXPECT_EQ(removedNames(), "");
  EXPECT_EQ(changes, 2);
}

TEST_F(BackgroundCycle, NotifiesOfTheUsersTomorrowOnceADayOfUTCForEachFolder) {
  calendar = Calendar("Pacific/Auckland");  // 13 hours ahead: its tomorrow begins in 3 hours.
  constexpr double hour = 3600;
  const auto going = [](double seconds) { return aged(90 - seconds / secondsPerDay); };
  makeTemporary("/a", {"x" + going(4 * hour), "y" + going(26 * hour)});
  makeTemporary("/b", {"z" + going(20 * hour)});
  makeTemporary("/c", {"today" + going(2 * hour), "later" + going(60 * hour)});
  notifications.refuses = true;
  runCycle();
  EXPECT_EQ(notifications.attempts, 2);
  EXPECT_EQ(standardDefaults.string("notified.tomorrow.1"), std::nullopt);

  notifications.refuses = false;
  waitFor(model->resumeNotifications());
  const std::vector<std::string> delivered = {"tomorrow.1|a|2 items will go to the Bin tomorrow.",
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
