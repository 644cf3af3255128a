#include "FakeServices.h"
#include "Tidemar/Model/FolderLink.h"

namespace tidemar::testing {
namespace {

using Lines = std::vector<std::string>;

const std::string old = ModelWorld::aged(91);

TEST(FolderCommands, EachFailureIsToldInItsOwnWords) {
  ModelWorld world;
  EXPECT_FALSE(QCoro::waitFor(world.model->addFolder(FileURL("/missing"))));
  world.makeTemporary("/f");
  const Folder folder = world.model->reports().at(0).folder;
  world.disk.erase("/f");
  QCoro::waitFor(world.model->setTemporary(folder, true));
  QCoro::waitFor(world.model->setTemporary(folder, false));
  QCoro::waitFor(world.model->changeSettings(99, {}, {}));
  Folder unknown = folder;
  unknown.id = std::nullopt;
  QCoro::waitFor(world.model->removeFolder(unknown));
  // Not even what nobody expected is silent.
  world.disk.draw("/odd/");
  world.disk.before("canonical /odd", [] { throw 42; });
  EXPECT_FALSE(QCoro::waitFor(world.model->addFolder(FileURL("/odd"))));

  Lines titles;
  for (const std::string& told : world.alerts.told)
    titles.push_back(told.substr(0, told.find('\n')));
  EXPECT_EQ(titles,
            (Lines{"Couldn't add missing", "Couldn't make f Temporary",
                   "Couldn't make the folder plain again", "Couldn't save the folder's settings",
                   "Couldn't remove f", "Couldn't add odd"}));
  EXPECT_TRUE(world.alerts.told.back().ends_with("\nSomething unexpected happened."));

  QCoro::waitFor(world.model->removeFolder(folder));
  EXPECT_EQ(world.alerts.told.size(), titles.size())
      << "a folder that is gone can be forgotten without a word";
  EXPECT_TRUE(world.model->reports().empty());
}

TEST(FolderCommands, NewSettingsKeepWhatARunWroteMeanwhile) {
  ModelWorld world;
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

TEST(FolderCommands, NewRulesAreShownBeforeTheirFoldersDiskIsAsked) {
  ModelWorld world;
  world.makeTemporary("/f", {"a" + ModelWorld::aged(10)});
  std::vector<FolderReport> shown;
  world.disk.before("list /f", [&] { shown = world.model->reports(); });
  TemporarySettings settings;
  settings.maxAgeDays = 7;
  QCoro::waitFor(
      world.model->changeSettings(*world.model->reports().at(0).folder.id, {}, settings));
  ASSERT_EQ(shown.size(), 1U);
  EXPECT_EQ(shown[0].folder.settings, settings);
  EXPECT_EQ(shown[0].status->dueNow.size(), 1U);
  EXPECT_EQ(shown, world.model->reports());
}

TEST(FolderCommands, OnlyTheFirstTemporaryFolderAsksForPermission) {
  ModelWorld world;
  world.makeTemporary("/a");
  world.makeTemporary("/b");
  EXPECT_EQ(world.notifications.requests, 1);
  QCoro::waitFor(world.model->setTemporary(world.model->reports().at(1).folder, false));
  QCoro::waitFor(world.model->setTemporary(world.model->reports().at(0).folder, true));
  EXPECT_EQ(world.notifications.requests, 2) << "the count is back at one";
}

TEST(FolderCommands, NothingThatCouldBeCutOffBeginsAfterTheStop) {
  ModelWorld world;
  world.makeTemporary("/f", {"a" + old});
  world.runCycle();
  world.disk.draw("/g/");
  const auto plain = QCoro::waitFor(world.model->addFolder(FileURL("/g")));
  world.model->stopClearing();
  QCoro::waitFor(world.model->putBack({1}));
  QCoro::waitFor(world.model->setTemporary(plain.value(), true));
  EXPECT_EQ(world.disk.names("/f"), "");
  EXPECT_EQ(world.disk.tags("/g"), Lines{});
}

TEST(PutBack, FailuresAreToldOnceInOneAlertAndStopNothing) {
  ModelWorld world;
  world.makeTemporary("/f", {"a" + old, "b" + old, "c" + old, "d" + old});
  world.runCycle();
  ASSERT_EQ(world.removedNames(), "a b c d");
  world.disk.draw("/f/b");
  world.disk.erase(std::string(FakeFileManager::binPath) + "/a");
  world.disk.erase(std::string(FakeFileManager::binPath) + "/c");

  QCoro::waitFor(world.model->putBack({1, 2, 3, 4}));
  QCoro::waitFor(world.model->putBack({}));
  EXPECT_EQ(world.alerts.told,
            Lines{"Some items couldn't be put back\n"
                  "An item is no longer in the Bin.\n"
                  "Something new is already called b in f, so it was left in the Bin."});
  EXPECT_EQ(world.disk.names("/f"), "b d");
}

TEST(PutBack, ASecondPressPutsBackOnceAndFailsAtNothing) {
  ModelWorld world;
  world.makeTemporary("/f", {"a" + old});
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

TEST(FinderIntegration, TheListOfTemporaryFoldersIsWrittenOnlyWhenItChanges) {
  ModelWorld world;
  const FileURL file = world.directory.url("shared.json");
  const auto listed = [&] { return world.sharedDefaults.stringArray("temporaryFolderPaths"); };
  QCoro::waitFor(world.model->refreshReports());
  EXPECT_EQ(listed(), Lines{}) << "an empty list, not a missing key";

  world.makeTemporary("/a");
  world.makeTemporary("/b");
  EXPECT_EQ(listed(), (Lines{"/a", "/b"}));
  std::filesystem::remove(file.path());
  world.sharedDefaults.setStringArray("temporaryFolderPaths", Lines{"/a", "/b"});
  const auto written = std::filesystem::last_write_time(file.path());
  QCoro::waitFor(world.model->refreshReports());
  EXPECT_EQ(std::filesystem::last_write_time(file.path()), written);

  QCoro::waitFor(world.model->setTemporary(world.model->reports().at(0).folder, false));
  EXPECT_EQ(listed(), Lines{"/b"});
  world.disk.fail("list /b", EIO);
  QCoro::waitFor(world.model->refreshReports());
  EXPECT_EQ(listed(), Lines{}) << "one that can't be read drops out";
}

TEST(FinderIntegration, ALinkMakesAFolderTemporaryOnceAndForAll) {
  ModelWorld world;
  world.disk.draw("/home/ada/My-Folder/");
  world.disk.tags("/home/ada/My-Folder") = {"Work", "Red"};
  const char* link = "tidemar://folder?path=/home/ada/My%2DFolder";
  EXPECT_EQ(QCoro::waitFor(world.model->followLink(link)), FileURL("/home/ada/My-Folder"));
  EXPECT_EQ(world.disk.tags("/home/ada/My-Folder"), (Lines{"Work", "Red", "Tidemar: Temporary"}));

  world.disk.operations().clear();
  EXPECT_TRUE(QCoro::waitFor(world.model->followLink(link)));
  EXPECT_EQ(world.disk.changes(), Lines{}) << "a Temporary folder is only shown";
  EXPECT_FALSE(QCoro::waitFor(world.model->followLink("tidemar://elsewhere?path=/home/ada")));
  EXPECT_EQ(world.model->reports().size(), 1U);
  EXPECT_TRUE(world.alerts.told.empty());
}

TEST(FinderIntegration, LinksAreReadExactly) {
  const std::string tooLong = "tidemar://folder?path=/" + std::string(64 * 1024, 'a');
  const struct {
    const char* name;
    std::string_view link;
    const char* path;  ///< None where the link must be ignored.
  } rows[] = {
      {"a plain path", "tidemar://folder?path=/a/b", "/a/b"},
      {"blanks, quotes, a plus and an equals sign",
       "tidemar://folder?path=/a%20%22b%27+=", "/a \"b'+="},
      {"a percent sign is decoded once", "tidemar://folder?path=/a%2520b", "/a%20b"},
      {"a newline and a byte that isn't UTF-8", "tidemar://folder?path=/a%0A%FF", "/a\n\xff"},
      {"other items are passed over", "tidemar://folder/?x=1&p%61th=/a&y", "/a"},
      {"the first path counts", "tidemar://folder?path=/a&path=/b", "/a"},
      {"a fragment is no part of the value", "tidemar://folder?path=/a#b", "/a"},
      {"a scheme in capitals", "Tidemar://folder?path=/a", nullptr},
      {"another host", "tidemar://folders?path=/a", nullptr},
      {"no query", "tidemar://folder", nullptr},
      {"an item without a value", "tidemar://folder?path", nullptr},
      {"a value behind one without", "tidemar://folder?path&path=/a", nullptr},
      {"a relative path", "tidemar://folder?path=a/b", nullptr},
      {"a NUL", "tidemar://folder?path=/a%00/b", nullptr},
      {"half an escape", "tidemar://folder?path=/a%2", nullptr},
      {"a signed escape", "tidemar://folder?path=/a%-1", nullptr},
      {"over 64 KiB", tooLong, nullptr},
  };
  for (const auto& row : rows) {
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
}  // namespace tidemar::testing
