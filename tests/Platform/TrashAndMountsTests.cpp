#include <cerrno>
#include <functional>
#include <set>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/FileExpectations.h"
#include "support/FolderActions.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryTree.h"
#include "support/TestFileSystems.h"

namespace tidemar {
namespace {

using namespace testing;

std::string userNumber() {
  return std::to_string(geteuid());
}

class TrashAndMountsTest : public ::testing::Test {
 protected:
  FileURL trash(const std::string& relative) const {
    return FileURL(_home.path(".local/share/Trash/") + relative);
  }
  void expectEmptyTrash() const {
    EXPECT_TRUE(namesIn(trash("files")).empty());
    EXPECT_TRUE(namesIn(trash("info")).empty());
  }

  TemporaryDirectory _home;
  ScopedHome _environment{_home.url()};
};

TEST_F(TrashAndMountsTest, RefusesATrashThatIsALinkToAnotherDrive) {
  const TestFileSystem drive(TestFileSystem::Type::tmpfs);
  if (!drive.isMounted()) GTEST_SKIP() << drive.reason();
  makeTree(_home.url(), ".local/\n  share/\n    Trash -> " + drive.url().path() + "\nitem 3");
  EXPECT_EQ(codeOf([&] { trashItem(_home.url("item")); }), ELOOP);
  EXPECT_TRUE(namesIn(drive.url()).empty());
}

TEST_F(TrashAndMountsTest, RefusesADirectoryThatHoldsAMount) {
  const TestFileSystem drive(TestFileSystem::Type::tmpfs);
  if (!drive.isMounted()) GTEST_SKIP() << drive.reason();
  makeTree(_home.url(), "item/\n  deep/\n    mount/");
  writeFile(drive.url("precious"), "x");
  const BindMount mount(drive.url(), _home.url("item/deep/mount"));
  ASSERT_TRUE(mount.isMounted()) << mount.reason();
  EXPECT_EQ(codeOf([&] { trashItem(_home.url("item")); }), EXDEV);
  EXPECT_EQ(codeOf([&] { trashItem(_home.url("item/deep/mount")); }), EXDEV);
  EXPECT_TRUE(exists(_home.url("item/deep/mount/precious")));
}

class TrashOnADriveTest : public TrashAndMountsTest {
 protected:
  void SetUp() override {
    if (!_drive.isMounted()) GTEST_SKIP() << _drive.reason();
    makeTree(_drive.url(), "folder/\n  \"a b\" 3");
  }
  FileURL item() const { return _drive.url("folder/a b"); }

  TestFileSystem _drive{TestFileSystem::Type::tmpfs};
};

TEST_F(TrashOnADriveTest, UsesTheUsersDirectoryAtTheTopWithPathsFromThere) {
  const FileURL trash = _drive.url(".Trash-" + userNumber());
  EXPECT_EQ(trashItem(item()), FileURL(trash.path() + "/files/a b"));
  EXPECT_EQ(pathIn(FileURL(trash.path() + "/info/a b.trashinfo")), "folder/a%20b");
  struct stat values {};
  ASSERT_EQ(lstat(trash.path().c_str(), &values), 0);
  EXPECT_EQ(values.st_mode & 07777U, 0700U);
  EXPECT_FALSE(exists(_home.url(".local"))) << "the home Trash has no part in this";
}

TEST_F(TrashOnADriveTest, PrefersAFitDirectoryOfTheAdministrator) {
  const struct {
    const char* title;
    std::function<void(const TestFileSystem&)> arrange;
    bool isUsed;
  } rows[] = {
      {"sticky",
       [](const TestFileSystem& drive) {
         makeTree(drive.url(), ".Trash/");
         chmod(drive.url(".Trash").path().c_str(), 01777);
       },
       true},
      {"not sticky",
       [](const TestFileSystem& drive) {
         makeTree(drive.url(), ".Trash/");
         chmod(drive.url(".Trash").path().c_str(), 0777);
       },
       false},
      {"a link",
       [](const TestFileSystem& drive) {
         makeTree(drive.url(), "other/\n.Trash -> other");
         chmod(drive.url("other").path().c_str(), 01777);
       },
       false},
      {"the user's part of it is a link",
       [](const TestFileSystem& drive) {
         makeTree(drive.url(), "other/\n.Trash/");
         chmod(drive.url(".Trash").path().c_str(), 01777);
         makeTree(drive.url(".Trash"), userNumber() + " -> ../other");
       },
       false},
      {"the user's part of it belongs to someone else",
       [](const TestFileSystem& drive) {
         makeTree(drive.url(), "other/\n.Trash/");
         chmod(drive.url(".Trash").path().c_str(), 01777);
         makeTree(drive.url(".Trash"), userNumber() + "/");
         ASSERT_EQ(chown(drive.url(".Trash/" + userNumber()).path().c_str(), 12345, 1), 0);
       },
       false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    const TestFileSystem drive(TestFileSystem::Type::tmpfs);
    makeTree(drive.url(), "item 3");
    row.arrange(drive);
    const std::string expected = row.isUsed ? ".Trash/" + userNumber() : ".Trash-" + userNumber();
    EXPECT_EQ(trashItem(drive.url("item")), drive.url(expected + "/files/item"));
    EXPECT_TRUE(namesIn(drive.url("other")).empty());
  }
}

TEST_F(TrashOnADriveTest, RefusesAUsersDirectoryThatIsNotTheUsersOwn) {
  makeTree(_drive.url(), "other/\n.Trash-" + userNumber() + " -> other");
  EXPECT_EQ(codeOf([&] { trashItem(item()); }), ELOOP);
  EXPECT_TRUE(namesIn(_drive.url("other")).empty());

  const FileURL trash = _drive.url(".Trash-" + userNumber());
  ASSERT_EQ(unlink(trash.path().c_str()), 0);
  makeTree(_drive.url(), ".Trash-" + userNumber() + "/");
  ASSERT_EQ(chown(trash.path().c_str(), 12345, 12345), 0);
  EXPECT_EQ(codeOf([&] { trashItem(item()); }), EPERM);
  EXPECT_EQ(readFile(item()), "xxx");
  EXPECT_TRUE(namesIn(trash).empty());
}

TEST_F(TrashAndMountsTest, LeavesTheItemWhereNoRoomIsLeftForItsRecord) {
  const TestFileSystem drive(TestFileSystem::Type::tmpfs, "size=64k");
  if (!drive.isMounted()) GTEST_SKIP() << drive.reason();
  makeTree(drive.url(), "item 3");
  EXPECT_ANY_THROW(writeFile(drive.url("filler"), std::string(1 << 20, 'x')));
  const FileURL trash = drive.url(".Trash-" + userNumber());
  EXPECT_EQ(codeOf([&] { trashItem(drive.url("item")); }), ENOSPC);
  EXPECT_EQ(readFile(drive.url("item")), "xxx");
  EXPECT_TRUE(namesIn(FileURL(trash.path() + "/info")).empty());
  EXPECT_TRUE(namesIn(FileURL(trash.path() + "/files")).empty());
}

TEST_F(TrashAndMountsTest, UsesTheMountsOwnTrashWhereTheHomesIsOnTheSameDeviceButOutOfReach) {
  makeTree(_home.url(), "source/\n  item 3\nplace/");
  const BindMount mount(_home.url("source"), _home.url("place"));
  if (!mount.isMounted()) GTEST_SKIP() << mount.reason();
  EXPECT_EQ(trashItem(_home.url("place/item")),
            _home.url("place/.Trash-" + userNumber() + "/files/item"));
  expectEmptyTrash();
}

TEST_F(TrashAndMountsTest, RefusesSubvolumesAndWhatLiesInThem) {
  const TestFileSystem drive(TestFileSystem::Type::btrfs);
  if (!drive.isMounted()) GTEST_SKIP() << drive.reason();
  makeTree(drive.url(), "tree/\n  inner/");
  runCommand("btrfs subvolume create " + drive.url("tree/inner/volume").path());
  makeTree(drive.url("tree/inner/volume"), "item 3");
  EXPECT_EQ(codeOf([&] { trashItem(drive.url("tree")); }), EXDEV);
  EXPECT_EQ(codeOf([&] { trashItem(drive.url("tree/inner/volume")); }), EXDEV);
  EXPECT_EQ(codeOf([&] { trashItem(drive.url("tree/inner/volume/item")); }), EXDEV);
  EXPECT_EQ(readFile(drive.url("tree/inner/volume/item")), "xxx");
  EXPECT_EQ(namesIn(drive.url()), std::set<std::string>{"tree"});
}

}  // namespace
}  // namespace tidemar
