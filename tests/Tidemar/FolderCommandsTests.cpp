#include "FakeServices.h"
#include "Tidemar/CommandLine.h"
#include "Tidemar/Model/FolderLink.h"

namespace tidemar::testing {
namespace {

using Lines = std::vector<std::string>;

using FolderCommands = ModelTest;
using FinderIntegration = ModelTest;

const std::string old = ModelWorld::aged(91);

TEST_F(FolderCommands, EachFailureIsToldInItsOwnWords) {
  EXPECT_FALSE(waitFor(model->addFolder(FileURL("/missing"))));
  makeTemporary("/f");
  const Folder folder = model->reports().at(0).folder;
  disk.erase("/f");
  waitFor(model->setTemporary(folder, true));
  waitFor(model->setTemporary(folder, false));
  waitFor(model->changeSettings(99, {}, {}));
  Folder unknown = folder;
  unknown.id = std::nullopt;
  waitFor(model->removeFolder(unknown));
  // Not even what nobody expected is silent.
  disk.draw("/odd/");
  disk.before("canonical /odd", [] { throw 42; });
  EXPECT_FALSE(waitFor(model->addFolder(FileURL("/odd"))));

  Lines titles;
  for (const std::string& told : alerts.told)
    titles.push_back(told.substr(0, told.find('\n')));
  EXPECT_EQ(titles,
            (Lines{"Couldn't add missing", "Couldn't make f Temporary",
                   "Couldn't make the folder plain again", "Couldn't save the folder's settings",
                   "Couldn't remove f", "Couldn't add odd"}));
  EXPECT_TRUE(alerts.told.back().ends_with("\nSomething unexpected happened."));

  waitFor(model->removeFolder(folder));
  EXPECT_EQ(alerts.told.size(), titles.size())
      << "a folder that is gone can be forgotten without a word";
  EXPECT_TRUE(model->reports().empty());
}

TEST_F(FolderCommands, NewSettingsKeepWhatARunWroteMeanwhile) {
  makeTemporary("/f");
  const Folder asShown = model->reports().at(0).folder;
  now = ModelWorld::start + 100;
  runCycle();
  TemporarySettings settings;
  settings.maxAgeDays = 7;
  waitFor(model->changeSettings(*asShown.id, asShown.settings, settings));
  EXPECT_EQ(model->reports().at(0).folder.settings, settings);
  EXPECT_EQ(model->reports().at(0).folder.lastRunAt, Date{ModelWorld::start + 100});
}

TEST_F(FolderCommands, NewRulesAreShownBeforeTheirFoldersDiskIsAsked) {
  makeTemporary("/f", {"a" + aged(10)});
  std::vector<FolderReport> shown;
  disk.before("list /f", [&] { shown = model->reports(); });
  TemporarySettings settings;
  settings.maxAgeDays = 7;
  waitFor(model->changeSettings(*model->reports().at(0).folder.id, {}, settings));
  ASSERT_EQ(shown.size(), 1U);
  EXPECT_EQ(shown[0].folder.settings, settings);
  EXPECT_EQ(shown[0].status->dueNow.size(), 1U);
  EXPECT_EQ(shown, model->reports());
}

TEST_F(FolderCommands, OnlyTheFirstTemporaryFolderAsksForPermission) {
  makeTemporary("/a");
  makeTemporary("/b");
  EXPECT_EQ(notifications.requests, 1);
  waitFor(model->setTemporary(model->reports().at(1).folder, false));
  waitFor(model->setTemporary(model->reports().at(0).folder, true));
  EXPECT_EQ(notifications.requests, 2) << "the count is back at one";
}

TEST_F(FolderCommands, NothingThatCouldBeCutOffBeginsAfterTheStop) {
  makeTemporary("/f", {"a" + old});
  runCycle();
  disk.draw("/g/");
  const auto plain = waitFor(model->addFolder(FileURL("/g")));
  model->stopClearing();
  waitFor(model->putBack({1}));
  waitFor(model->setTemporary(plain.value(), true));
  EXPECT_EQ(disk.names("/f"), "");
  EXPECT_EQ(disk.tags("/g"), Lines{});
}

TEST_F(FolderCommands, WhatCannotBePutBackIsToldInOneAlertAndASecondPressFailsAtNothing) {
  makeTemporary("/f", {"a" + old, "b" + old, "c" + old, "d" + old});
  runCycle();
  ASSERT_EQ(removedNames(), "a b c d");
  disk.draw("/f/b");
  disk.erase(std::string(FakeFileManager::binPath) + "/a");
  disk.erase(std::string(FakeFileManager::binPath) + "/c");
  disk.operations().clear();

  auto first = model->putBack({1, 2, 3, 4});
  waitFor(model->putBack({4}));
  waitFor(std::move(first));
  waitFor(model->putBack({4}));
  waitFor(model->putBack({}));
  EXPECT_EQ(alerts.told,
            Lines{"Some items couldn't be put back\n"
                  "An item is no longer in the Bin.\n"
                  "Something new is already called b in f, so it was left in the Bin."});
  EXPECT_EQ(disk.names("/f"), "b d");
  EXPECT_EQ(disk.changes().size(), 1U);

  disk.erase("/f/b");
  waitFor(model->putBack({2}));
  EXPECT_EQ(disk.names("/f"), "d b") << "what failed can be tried again";
  EXPECT_EQ(alerts.told.size(), 1U);
}

TEST_F(FinderIntegration, TheListOfTemporaryFoldersIsWrittenOnlyWhenItChanges) {
  const FileURL file = directory.url("shared.json");
  const auto listed = [&] { return sharedDefaults.stringArray("temporaryFolderPaths"); };
  waitFor(model->refreshReports());
  EXPECT_EQ(listed(), Lines{}) << "an empty list, not a missing key";

  makeTemporary("/a");
  makeTemporary("/b");
  EXPECT_EQ(listed(), (Lines{"/a", "/b"}));
  std::filesystem::remove(file.path());
  sharedDefaults.setStringArray("temporaryFolderPaths", Lines{"/a", "/b"});
  const auto written = std::filesystem::last_write_time(file.path());
  waitFor(model->refreshReports());
  EXPECT_EQ(std::filesystem::last_write_time(file.path()), written);

  waitFor(model->setTemporary(model->reports().at(0).folder, false));
  EXPECT_EQ(listed(), Lines{"/b"});
  disk.fail("list /b", EIO);
  waitFor(model->refreshReports());
  EXPECT_EQ(listed(), Lines{}) << "one that can't be read drops out";
}

TEST_F(FinderIntegration, ALinkMakesAFolderTemporaryOnceAndForAll) {
  disk.draw("/home/ada/My-Folder/");
  disk.tags("/home/ada/My-Folder") = {"Work", "Red"};
  const char* link = "tidemar://folder?path=/home/ada/My%2DFolder";
  EXPECT_EQ(waitFor(model->followLink(link)), FileURL("/home/ada/My-Folder"));
  EXPECT_EQ(disk.tags("/home/ada/My-Folder"), (Lines{"Work", "Red", "Tidemar: Temporary"}));

  disk.operations().clear();
  EXPECT_TRUE(waitFor(model->followLink(link)));
  EXPECT_EQ(disk.changes(), Lines{}) << "a Temporary folder is only shown";
  EXPECT_FALSE(waitFor(model->followLink("tidemar://elsewhere?path=/home/ada")));
  EXPECT_EQ(model->reports().size(), 1U);
  EXPECT_TRUE(alerts.told.empty());
}

TEST(FolderLink, IsReadExactly) {
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

TEST(CommandLine, IsOneURLOrTheMarkOfALoginOrNothing) {
  const std::string longest(64 * 1024, 'a');
  const struct {
    const char* title;
    std::vector<std::string> arguments;
    std::optional<CommandLine> expected;  ///< None where the arguments are refused.
  } rows[] = {
      {"nothing", {}, CommandLine{}},
      {"a URL",
       {"tidemar://folder?path=/a\xff"},
       CommandLine{false, "tidemar://folder?path=/a\xff"}},
      {"a login", {"--launched-at-login"}, CommandLine{true, {}}},
      {"the bus", {"--launched-by-bus"}, CommandLine{true, {}}},
      {"the longest URL", {longest}, CommandLine{false, longest}},
      {"a URL too long", {longest + "a"}, {}},
      {"a login with a URL", {"--launched-at-login", "tidemar://folder?path=/a"}, {}},
      {"an argument that only begins alike", {"--launched-at-login=no"}, {}},
      {"an action", {"--setup"}, CommandLine{.action = "setup"}},
      {"an option", {"--quiet"}, {}},
      {"a dash", {"-"}, {}},
  };
  for (const auto& row : rows) {
    try {
      EXPECT_EQ(parseCommandLine(row.arguments), row.expected) << row.title;
    } catch (const std::invalid_argument& error) {
      EXPECT_EQ(row.expected, std::nullopt) << row.title << ": " << error.what();
    }
  }
}

TEST_F(FolderCommands, TheSystemStateIsWhatTheSystemSaysAndAFailureOfTheLoginItemIsTold) {
  int changes = 0;
  QObject::connect(model.get(), &AppModel::systemStateChanged, [&] { ++changes; });
  model->refreshSystemState();
  EXPECT_EQ(changes, 0) << "what stays the same is not published";
  EXPECT_TRUE(model->isFinderExtensionOff());
  finderExtension.enabled = notifications.authorized = true;
  loginItem.now = LoginItem::Status::requiresApproval;
  model->refreshSystemState();
  EXPECT_EQ(changes, 3);
  EXPECT_FALSE(model->isFinderExtensionOff());
  EXPECT_FALSE(model->isLoginItemEnabled());
  EXPECT_TRUE(model->loginItemNeedsApproval());
  EXPECT_TRUE(model->isNotificationAuthorized());

  model->setOpensAtLogin(false);
  EXPECT_FALSE(model->loginItemNeedsApproval());
  loginItem.becomes = LoginItem::Status::requiresApproval;
  model->setOpensAtLogin(true);
  EXPECT_TRUE(model->loginItemNeedsApproval());
  EXPECT_TRUE(alerts.told.empty());
  loginItem.now = LoginItem::Status::off;
  loginItem.fails = true;
  model->setOpensAtLogin(true);
  EXPECT_EQ(alerts.told, Lines{"Couldn't turn on Open at login\nno such thing"});
  EXPECT_FALSE(model->isLoginItemEnabled());
}

}  // namespace
}  // namespace tidemar::testing
