#include <QTimer>
#include <future>

#include "FakeServices.h"
#include "Tidemar/Model/WaitingPool.h"

namespace tidemar::testing {
namespace {

const std::string old = ModelWorld::aged(91);
const std::string young = ModelWorld::aged(1);

TEST(BackgroundCycle, ClearsWhatIsOldAndReadsTheResult) {
  ModelWorld world;
  world.makeTemporary("/f", {"old 10" + old, "new 10" + young});
  EXPECT_EQ(world.disk.names("/f"), "old new") << "making a folder Temporary clears nothing yet";

  world.disk.operations().clear();
  auto cycle = world.model->runBackgroundCycle();
  QCoro::waitFor(world.model->runBackgroundCycle());
  EXPECT_FALSE(cycle.isReady()) << "a second trigger must not wait for the first cycle";
  QCoro::waitFor(std::move(cycle));
  // A cycle reads the folder before the run, in it and after it; the second trigger does nothing.
  EXPECT_EQ(std::ranges::count(world.disk.operations(), "list /f"), 3);
  EXPECT_EQ(world.disk.names("/f"), "new");
  EXPECT_EQ(world.removedNames(), "old");
  EXPECT_EQ(world.model->reports().at(0).status->items.size(), 1U);
  EXPECT_EQ(world.model->freeSpace(), 500);
}

TEST(BackgroundCycle, ReadsAFolderInWhichNothingGoesOnceLessUnlessAnotherSawMore) {
  ModelWorld world;
  world.makeTemporary("/a", {"young" + young});
  world.makeTemporary("/b", {"old" + old});
  world.disk.operations().clear();
  world.runCycle();
  EXPECT_EQ(std::ranges::count(world.disk.operations(), "list /a"), 2);
  EXPECT_EQ(std::ranges::count(world.disk.operations(), "list /b"), 3);

  world.disk.draw("/b/older" + old);
  std::optional<QCoro::Task<void>> refresh;
  world.disk.before("trash /b/older", [&] {
    world.disk.draw("/a/later" + young);
    refresh.emplace(world.model->refreshReports());
  });
  world.runCycle();
  EXPECT_TRUE(refresh && refresh->isReady());
  EXPECT_EQ(world.model->reports().at(0).status->items.size(), 2U);
}

TEST(BackgroundCycle, AFolderThatFailsCostsOnlyItselfAndAllShareOneDate) {
  ModelWorld world;
  for (const char* path : {"/a", "/b", "/c"})
    world.makeTemporary(path, {"old" + old});
  world.disk.fail("list /b", EIO);
  world.disk.before("list /a", [&] { world.now = ModelWorld::start + 5000; });

  world.runCycle();
  EXPECT_EQ(world.disk.names("/a") + world.disk.names("/b") + world.disk.names("/c"), "old");
  const auto reports = world.model->reports();
  ASSERT_EQ(reports.size(), 3U);
  EXPECT_FALSE(reports[1].status);
  for (const std::size_t index : {0, 2}) {
    EXPECT_TRUE(reports[index].status);
    EXPECT_EQ(reports[index].folder.lastRunAt, Date{ModelWorld::start});
  }
  ASSERT_EQ(world.model->journal().size(), 2U);
  for (const JournalEntry& entry : world.model->journal())
    EXPECT_EQ(entry.performedAt, Date{ModelWorld::start});
  EXPECT_TRUE(world.alerts.told.empty()) << "a cycle tells the user nothing";
}

TEST(BackgroundCycle, WhatARunCouldNotRemoveIsKnownUntilARunCan) {
  ModelWorld world;
  world.makeTemporary("/a", {"old" + old});
  world.disk.before("trash /a/old",
                    [] { throw PlatformError("remove", FileURL("/a/old"), EPERM); });
  world.runCycle();
  const std::vector<LeftItem> left = world.model->reports().at(0).left;
  ASSERT_EQ(left.size(), 1U);
  EXPECT_EQ(left[0].url, FileURL("/a/old"));
  EXPECT_NE(left[0].reason.find("not permitted"), std::string::npos) << left[0].reason;
  world.runCycle();
  EXPECT_TRUE(world.model->reports().at(0).left.empty());
}

TEST(BackgroundCycle, AFolderThatIsRemovedMeanwhileIsNoFailure) {
  if (access("/run/systemd/journal/socket", W_OK) == 0)
    GTEST_SKIP() << "the log goes to this machine's journal and can't be read here";
  ModelWorld world;
  world.makeTemporary("/a", {"old" + old});
  const std::int64_t second = world.makeTemporary("/b");
  std::optional<QCoro::Task<void>> removal;
  world.disk.before("trash /a/old", [&] {
    removal.emplace(world.model->removeFolder(world.model->reportForFolder(second)->folder));
  });
  ::testing::internal::CaptureStderr();
  world.runCycle();
  const std::string log = ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(log.find("error"), std::string::npos) << log;
  EXPECT_EQ(world.model->reports().size(), 1U);
}

TEST(BackgroundCycle, NoFailureIsSilentOrTheLastCycle) {
  if (access("/run/systemd/journal/socket", W_OK) == 0)
    GTEST_SKIP() << "the log goes to this machine's journal and can't be read here";
  using Change = std::function<void(ModelWorld&)>;
  const auto store = [](const std::string& disposal) {
    return [disposal](ModelWorld& world) {
      runSQL(world.directory.path("data/Tidemar/tidemar.sqlite"),
             "UPDATE folder SET disposal = '" + disposal + "'");
    };
  };
  const auto throwBefore = [](const char* operation) {
    return [operation](ModelWorld& world) { world.disk.before(operation, [] { throw 42; }); };
  };
  const Change nothing = [](ModelWorld&) {};
  const struct {
    const char* name;
    Change spoil;
    Change mend;
    std::vector<const char*> lines;
  } rows[] = {
      {"a row that isn't understood",
       store("burn"),
       store("bin"),
       {"Couldn't read the folders: ", "Run of folder 1 failed: Unknown disposal burn"}},
      {"an exception of no known kind, while reading",
       throwBefore("list /f"),
       nothing,
       {"Couldn't read folder 1: Something unexpected happened."}},
      {"one in a run",
       throwBefore("trash /f/old"),
       nothing,
       {"Run of folder 1 failed: Something unexpected happened."}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    ModelWorld world;
    world.makeTemporary("/f", {"old" + old});
    row.spoil(world);
    ::testing::internal::CaptureStderr();
    world.runCycle();
    const std::string log = ::testing::internal::GetCapturedStderr();
    for (const char* line : row.lines)
      EXPECT_NE(log.find(line), std::string::npos) << line << "\n" << log;
    EXPECT_EQ(world.disk.names("/f"), "old");
    row.mend(world);
    world.runCycle();
    EXPECT_EQ(world.disk.names("/f"), "");
  }
}

TEST(BackgroundCycle, AClockThatWasSetFarOffClearsNothingForAnHour) {
  constexpr double step = 100 * secondsPerDay;
  for (const bool isSleep : {false, true}) {
    ModelWorld world;
    world.makeTemporary("/f", {"item" + young});
    world.runCycle();
    // A computer that slept for as long moves both clocks.
    world.clockStep = isSleep ? 0 : step;
    for (const double minutes : {0, 30, 58}) {
      world.now = ModelWorld::start + step + minutes * 60;
      world.runCycle();
      EXPECT_EQ(world.disk.names("/f"), isSleep ? "" : "item") << minutes;
    }
    world.now = ModelWorld::start + step + 3600;
    world.runCycle();
    EXPECT_EQ(world.disk.names("/f"), "") << "whether it was right can't be told for ever";
  }
}

TEST(BackgroundCycle, AStartByAClockFarAheadOfAllThatIsKnownClearsNothingAtOnce) {
  for (const bool isFar : {false, true}) {
    ModelWorld world;
    world.makeTemporary("/f", {"item" + young});
    world.now = ModelWorld::start + (isFar ? 367 : 365) * secondsPerDay;
    world.runCycle();
    EXPECT_EQ(world.disk.names("/f"), isFar ? "item" : "");
  }
}

TEST(BackgroundCycle, SlowFilesLeaveTheMainThreadFree) {
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

TEST(BackgroundCycle, StoppingEndsARunBetweenTwoItemsAndWaitsForItsEnd) {
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

TEST(AppModel, AFirstLaunchMakesAPrivateDatabase) {
  ModelWorld world;
  struct stat values {};
  ASSERT_EQ(stat(world.directory.path("data/Tidemar").c_str(), &values), 0);
  EXPECT_EQ(values.st_mode & 0777, 0700U);
  ASSERT_EQ(stat(world.directory.path("data/Tidemar/tidemar.sqlite").c_str(), &values), 0);
  EXPECT_EQ(values.st_mode & 0777, 0600U);
}

TEST(AppModel, TheJournalHoldsSevenDaysAndIsPublishedOnlyWhenItChanges) {
  ModelWorld world;
  world.makeTemporary("/f", {"old" + old});
  int changes = 0;
  QObject::connect(world.model.get(), &AppModel::journalChanged, [&] { ++changes; });
  world.runCycle();
  EXPECT_EQ(changes, 1);
  world.now = ModelWorld::start + 7 * secondsPerDay;
  QCoro::waitFor(world.model->refreshReports());
  EXPECT_EQ(world.removedNames(), "old") << "an entry of exactly seven days is still shown";
  world.now = ModelWorld::start + 7 * secondsPerDay + 1;
  QCoro::waitFor(world.model->refreshReports());
  EXPECT_EQ(world.removedNames(), "");
  EXPECT_EQ(changes, 2);
}

TEST(AppModel, TheSystemStateFollowsTheSystem) {
  ModelWorld world;
  EXPECT_TRUE(world.model->isFinderExtensionOff());
  int changes = 0;
  QObject::connect(world.model.get(), &AppModel::systemStateChanged, [&] { ++changes; });
  world.model->refreshSystemState();
  EXPECT_EQ(changes, 0) << "what stays the same is not published";

  world.finderExtension.enabled = true;
  world.loginItem.now = LoginItem::Status::requiresApproval;
  world.notifications.authorized = true;
  world.model->refreshSystemState();
  EXPECT_EQ(changes, 3);
  EXPECT_FALSE(world.model->isFinderExtensionOff());
  EXPECT_FALSE(world.model->isLoginItemEnabled());
  EXPECT_TRUE(world.model->loginItemNeedsApproval());
  EXPECT_TRUE(world.model->isNotificationAuthorized());
}

}  // namespace
}  // namespace tidemar::testing
