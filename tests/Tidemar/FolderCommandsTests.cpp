#include <filesystem>

#include <gtest/gtest.h>

#include "FakeServices.h"
#include "Tidemar/Model/FolderLink.h"

namespace tidemar {
namespace {

using namespace testing;
using Lines = std::vector<std::string>;

const std::string veryOld =
    " @" + std::to_string(static_cast<std::int64_t>(ModelWorld::start - 91 * secondsPerDay));

TEST(FolderCommands, EachFailureIsToldInItsOwnWords) {
  ModelWorld world;
  EXPECT_FALSE(QCoro::waitFor(world.model->addFolder(FileURL("/missing"))));
  ASSERT_EQ(world.alerts.told.size(), 1U);
  EXPECT_TRUE(world.alerts.told[0].starts_with("Couldn't add missing\n")) << world.alerts.told[0];

  world.disk.draw("/f/");
  world.makeTemporary("/f");
  const Folder folder = world.model->reports().at(0).folder;
  world.disk.erase("/f");
  world.alerts.told.clear();
  QCoro::waitFor(world.model->setTemporary(folder, true));
  QCoro::waitFor(world.model->setTemporary(folder, false));
  Folder gone = folder;
  gone.id = 99;
  QCoro::waitFor(world.model->changeSettings(99, {}, {}));
  gone.id = std::nullopt;
  QCoro::waitFor(world.model->removeFolder(gone));
  ASSERT_EQ(world.alerts.told.size(), 4U);
  const Lines beginnings = {"Couldn't make f Temporary\n", "Couldn't make the folder plain again\n",
                            "Couldn't save the folder's settings\n", "Couldn't remove f\n"};
  for (std::size_t i = 0; i < 4; ++i)
    EXPECT_TRUE(world.alerts.told[i].starts_with(beginnings[i])) << world.alerts.told[i];

  QCoro::waitFor(world.model->removeFolder(folder));
  EXPECT_EQ(world.alerts.told.size(), 4U)
      << "a folder that is gone can be forgotten without a word";
  EXPECT_TRUE(world.model->reports().empty());
}

TEST(FolderCommands, NewSettingsKeepWhatARunWroteMeanwhile) {
  ModelWorld world;
  world.disk.draw("/f/");
  world.makeTemporary("/f");
  const Folder asShown = world.model->reports().at(0).folder;
  world.now = ModelWorld::start + 100;
  world.runCycle();
  TemporarySettings settings;
  settings.maxAgeDays = 7;
  QCoro::waitFor(world.model->changeSettings(*asShown.id, asShown.settings, settings));
  EXPECT_EQ(world.model->reports().at(0).folder.settings, settings);
  EXPECT_EQ(world.model->reports().at(0).folder.lastRunAt, Date{ModelWorld::start + 100});
}

TEST(FolderCommands, OnlyTheFirstTemporaryFolderAsksForPermission) {
  ModelWorld world;
  world.disk.draw("/a/\n/b/");
  world.makeTemporary("/a");
  EXPECT_EQ(world.notifications.requests, 1);
  world.makeTemporary("/b");
  EXPECT_EQ(world.notifications.requests, 1);
  QCoro::waitFor(world.model->setTemporary(world.model->reports().at(1).folder, false));
  QCoro::waitFor(world.model->setTemporary(world.model->reports().at(0).folder, true));
  EXPECT_EQ(world.notifications.requests, 2) << "the count is back at one";
}

TEST(PutBack, FailuresAreToldOnceInOneAlertAndStopNothing) {
  ModelWorld world;
  world.disk.draw("/f/\n  a" + veryOld + "\n  b" + veryOld + "\n  c" + veryOld + "\n  d" + veryOld);
  world.makeTemporary("/f");
  world.runCycle();
  ASSERT_EQ(world.removedNames(), "a b c d");
  world.disk.draw("/f/b");
  world.disk.erase(std::string(FakeFileManager::binPath) + "/a");
  world.disk.erase(std::string(FakeFileManager::binPath) + "/c");

  QCoro::waitFor(world.model->putBack({1, 2, 3, 4}));
  EXPECT_EQ(world.alerts.told,
            Lines{"Some items couldn't be put back\n"
                  "An item is no longer in the Bin.\n"
                  "Something new is already called b in f, so it was left in the Bin."});
  EXPECT_EQ(world.disk.names("/f"), "b d");

  QCoro::waitFor(world.model->putBack({}));
  EXPECT_EQ(world.alerts.told.size(), 1U);
}

TEST(PutBack, ASecondPressPutsBackOnceAndFailsAtNothing) {
  ModelWorld world;
  world.disk.draw("/f/\n  a" + veryOld);
  world.makeTemporary("/f");
  world.runCycle();
  world.disk.operations().clear();
  auto first = world.model->putBack({1});
  QCoro::waitFor(world.model->putBack({1}));
  QCoro::waitFor(std::move(first));
  QCoro::waitFor(world.model->putBack({1}));
  EXPECT_EQ(world.disk.names("/f"), "a");
  EXPECT_EQ(world.disk.changes().size(), 1U);
  EXPECT_EQ(world.alerts.told, Lines{});

  // One that failed can be tried again.
  world.now = world.now + 91 * secondsPerDay;
  world.runCycle();
  world.disk.draw("/f/a");
  QCoro::waitFor(world.model->putBack({2}));
  EXPECT_EQ(world.alerts.told.size(), 1U);
  world.disk.erase("/f/a");
  QCoro::waitFor(world.model->putBack({2}));
  EXPECT_EQ(world.disk.names("/f"), "a");
  EXPECT_EQ(world.alerts.told.size(), 1U);
}

TEST(FolderCommands, WhatNobodyExpectedIsToldToo) {
  ModelWorld world;
  world.disk.draw("/f/");
  world.disk.before("canonical /f", [] { throw 42; });
  EXPECT_FALSE(QCoro::waitFor(world.model->addFolder(FileURL("/f"))));
  EXPECT_EQ(world.alerts.told, Lines{"Couldn't add f\nSomething unexpected happened."});
}

TEST(FolderCommands, NothingThatCouldBeCutOffBeginsAfterTheStop) {
  ModelWorld world;
  world.disk.draw("/f/\n  a" + veryOld + "\n/g/");
  world.makeTemporary("/f");
  world.runCycle();
  const auto plain = QCoro::waitFor(world.model->addFolder(FileURL("/g")));
  world.model->stopClearing();
  QCoro::waitFor(world.model->putBack({1}));
  QCoro::waitFor(world.model->setTemporary(plain.value(), true));
  EXPECT_EQ(world.disk.names("/f"), "");
  EXPECT_EQ(world.disk.tags("/g"), Lines{});
}

TEST(FinderIntegration, TheListOfTemporaryFoldersIsWrittenOnlyWhenItChanges) {
  ModelWorld world;
  const FileURL file = world.directory.url("shared.json");
  QCoro::waitFor(world.model->refreshReports());
  EXPECT_EQ(world.sharedDefaults.stringArray("temporaryFolderPaths"), Lines{})
      << "an empty list, not a missing key";

  world.disk.draw("/a/\n/b/");
  world.makeTemporary("/a");
  world.makeTemporary("/b");
  EXPECT_EQ(world.sharedDefaults.stringArray("temporaryFolderPaths"), (Lines{"/a", "/b"}));
  std::filesystem::remove(file.path());
  world.sharedDefaults.setStringArray("temporaryFolderPaths", Lines{"/a", "/b"});
  const auto written = std::filesystem::last_write_time(file.path());
  QCoro::waitFor(world.model->refreshReports());
  EXPECT_EQ(std::filesystem::last_write_time(file.path()), written);

  QCoro::waitFor(world.model->setTemporary(world.model->reports().at(0).folder, false));
  EXPECT_EQ(world.sharedDefaults.stringArray("temporaryFolderPaths"), Lines{"/b"});
  world.disk.fail("list /b", EIO);
  QCoro::waitFor(world.model->refreshReports());
  EXPECT_EQ(world.sharedDefaults.stringArray("temporaryFolderPaths"), Lines{})
      << "one that can't be read drops out";
}

TEST(FinderIntegration, ALinkMakesAFolderTemporaryOnceAndForAll) {
  ModelWorld world;
  world.disk.draw("/home/ada/My-Folder/");
  world.disk.tags("/home/ada/My-Folder") = {"Work", "Red"};
  const char* link = "tidemar://folder?path=/home/ada/My%2DFolder";
  EXPECT_EQ(QCoro::waitFor(world.model->open(link)), FileURL("/home/ada/My-Folder"));
  EXPECT_EQ(world.disk.tags("/home/ada/My-Folder"), (Lines{"Work", "Red", "Tidemar: Temporary"}));

  world.disk.operations().clear();
  EXPECT_TRUE(QCoro::waitFor(world.model->open(link)));
  EXPECT_EQ(world.disk.changes(), Lines{}) << "a Temporary folder is only shown";
  EXPECT_FALSE(QCoro::waitFor(world.model->open("tidemar://elsewhere?path=/home/ada")));
  EXPECT_EQ(world.model->reports().size(), 1U);
  EXPECT_TRUE(world.alerts.told.empty());
}

TEST(FinderIntegration, LinksAreReadExactly) {
  struct Row {
    const char* name;
    std::string_view link;
    const char* path;  ///< None where the link must be ignored.
  };
  using namespace std::string_view_literals;
  const std::string tooLong = "tidemar://folder?path=/" + std::string(64 * 1024, 'a');
  const Row rows[] = {
      {"a plain path", "tidemar://folder?path=/a/b", "/a/b"},
      {"blanks and quotes", "tidemar://folder?path=/a%20%22b%27", "/a \"b'"},
      {"a percent sign is decoded once", "tidemar://folder?path=/a%2520b", "/a%20b"},
      {"a newline and a byte that isn't UTF-8", "tidemar://folder?path=/a%0A%FF", "/a\n\xff"},
      {"a plus is a plus", "tidemar://folder?path=/a+b", "/a+b"},
      {"an equals sign in the value", "tidemar://folder?path=/a=b", "/a=b"},
      {"other items are passed over", "tidemar://folder?x=1&path=/a&y", "/a"},
      {"the first path counts", "tidemar://folder?path=/a&path=/b", "/a"},
      {"an encoded name", "tidemar://folder?p%61th=/a", "/a"},
      {"a path of the URL itself", "tidemar://folder/?path=/a", "/a"},
      {"a fragment is no part of the value", "tidemar://folder?path=/a#b", "/a"},
      {"another scheme", "tidemars://folder?path=/a", nullptr},
      {"a scheme in capitals", "Tidemar://folder?path=/a", nullptr},
      {"a host in capitals", "tidemar://Folder?path=/a", nullptr},
      {"another host", "tidemar://folders?path=/a", nullptr},
      {"no host", "tidemar:folder?path=/a", nullptr},
      {"no query", "tidemar://folder", nullptr},
      {"an empty query", "tidemar://folder?", nullptr},
      {"no item of the name", "tidemar://folder?paths=/a", nullptr},
      {"an item without a value", "tidemar://folder?path", nullptr},
      {"an empty value", "tidemar://folder?path=", nullptr},
      {"a value behind one without", "tidemar://folder?path&path=/a", nullptr},
      {"a relative path", "tidemar://folder?path=a/b", nullptr},
      {"a NUL", "tidemar://folder?path=/a%00/b", nullptr},
      {"a raw NUL", "tidemar://folder?path=/a\0/b"sv, nullptr},
      {"half an escape", "tidemar://folder?path=/a%2", nullptr},
      {"an escape of no digits", "tidemar://folder?path=/a%zz", nullptr},
      {"a signed escape", "tidemar://folder?path=/a%-1", nullptr},
      {"over 64 KiB", tooLong, nullptr},
  };
  for (const Row& row : rows) {
    const auto expected = row.path == nullptr ? std::nullopt : std::optional(FileURL(row.path));
    EXPECT_EQ(folderOfLink(row.link), expected) << row.name;
  }
}

TEST(LoginItem, AFailureIsToldAndTheStateIsWhatTheSystemSays) {
  ModelWorld world;
  world.loginItem.becomes = LoginItem::Status::requiresApproval;
  world.model->setOpensAtLogin(true);
  EXPECT_TRUE(world.alerts.told.empty());
  EXPECT_TRUE(world.model->loginItemNeedsApproval());
  world.model->setOpensAtLogin(false);
  EXPECT_FALSE(world.model->loginItemNeedsApproval());

  world.loginItem.fails = true;
  world.model->setOpensAtLogin(true);
  EXPECT_EQ(world.alerts.told, Lines{"Couldn't turn on Open at login\nno such thing"});
  EXPECT_FALSE(world.model->isLoginItemEnabled());
}

}  // namespace
}  // namespace tidemar
