#include <cerrno>
#include <set>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "Platform/Files/Changes/Move.h"
#include "Platform/Files/Tags.h"
#include "Platform/Files/Trash/Trash.h"
#include "Platform/PlatformError.h"
#include "support/FailingSystemCall.h"
#include "support/FileExpectations.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryTree.h"
#include "support/TestFileSystems.h"

namespace tidemar {
namespace {

using namespace testing;

struct stat statusOf(const FileURL& url) {
  struct stat values {};
  EXPECT_EQ(lstat(url.path().c_str(), &values), 0) << url.path();
  return values;
}

class MoveTest : public ::testing::Test {
 protected:
  FileURL trash(const std::string& relative) const {
    return FileURL(_home.path(".local/share/Trash/") + relative);
  }

  TemporaryDirectory _home;
  ScopedHome _environment{_home.url()};
};

TEST_F(MoveTest, NeverReplacesWhatLiesAtTheNewPlace) {
  const char* occupants[] = {"to 3", "to/", "to -> nowhere", "to |"};
  for (const char* source : {"from 1", "from/", "from -> nowhere"}) {
    for (const char* occupant : occupants) {
      for (const bool canRefuse : {true, false}) {
        SCOPED_TRACE(std::string(source) + " to " + occupant);
        const TemporaryDirectory folder;
        makeTree(folder.url(), std::string(source) + "\n" + occupant);
        const struct stat before = statusOf(folder.url("to"));
        const auto move = [&] {
          EXPECT_EQ(codeOf([&] { moveItem(folder.url("from"), folder.url("to")); }), EEXIST);
        };
        canRefuse ? move() : withFailingSystemCall(SYS_renameat2, EINVAL, move);
        EXPECT_EQ(statusOf(folder.url("to")).st_ino, before.st_ino);
        EXPECT_TRUE(exists(folder.url("from")));
      }
    }
  }
}

TEST_F(MoveTest, OutOfATrashTakesTheRecordAlong) {
  const std::string name = "a % #\n\xFF";
  writeFile(_home.url(name), "content");
  writeFile(_home.url("other"), "");
  const FileURL binned = trashItem(_home.url(name));
  trashItem(_home.url("other"));
  const std::string foreign = "10 1700000000 other\n12 1700000001 not%20it\nan odd line\n";
  writeFile(trash("directorysizes"), "7 1700000000 a%20%25%20%23%0A%FF\n" + foreign);

  moveItem(binned, _home.url("back"));

  EXPECT_EQ(readFile(_home.url("back")), "content");
  EXPECT_EQ(namesIn(trash("files")), std::set<std::string>{"other"});
  EXPECT_EQ(namesIn(trash("info")), std::set<std::string>{"other.trashinfo"});
  EXPECT_EQ(readFile(trash("directorysizes")), foreign);
  EXPECT_EQ(namesIn(trash("")), (std::set<std::string>{"directorysizes", "files", "info"}));
}

TEST_F(MoveTest, KeepsTheRecordOfAnItemThatCouldNotLeave) {
  writeFile(_home.url("item"), "");
  const FileURL binned = trashItem(_home.url("item"));
  writeFile(_home.url("item"), "new");
  EXPECT_EQ(codeOf([&] { moveItem(binned, _home.url("item")); }), EEXIST);
  EXPECT_TRUE(exists(trash("info/item.trashinfo")));
}

TEST_F(MoveTest, OutOfAFolderThatOnlyLooksLikeATrashLeavesItsNeighboursAlone) {
  makeTree(_home.url(), "project/\n  files/\n    item\n  info/\n    item.trashinfo 3");
  moveItem(_home.url("project/files/item"), _home.url("item"));
  EXPECT_EQ(readFile(_home.url("project/info/item.trashinfo")), "xxx");
}

TEST_F(MoveTest, RefusesWhatIsNoItem) {
  makeTree(_home.url(), "folder/\n  item");
  EXPECT_EQ(codeOf([&] { moveItem(_home.url("missing"), _home.url("to")); }), ENOENT);
  EXPECT_EQ(codeOf([&] { moveItem(_home.url("folder"), _home.url("missing/to")); }), ENOENT);
  EXPECT_NE(codeOf([&] { moveItem(_home.url("folder"), FileURL(_home.path("folder/.."))); }), 0);
  EXPECT_EQ(codeOf([&] { moveItem(_home.url("folder"), _home.url("folder/inside")); }), EINVAL);
  EXPECT_EQ(namesIn(_home.url("folder")), std::set<std::string>{"item"});
}

/// A put-back from one file system to another.
class MoveAcrossTest : public MoveTest {
 protected:
  void SetUp() override {
    if (!_drive.isMounted()) GTEST_SKIP() << _drive.reason();
  }

  TestFileSystem _drive{TestFileSystem::Type::ext4};
};

TEST_F(MoveAcrossTest, KeepsContentsAndMetadata) {
  makeTree(_home.url(), "tree/\n  inner/\n    file 5\n    pipe |\n  link -> nowhere\n  sparse");
  const FileURL tree = _home.url("tree");
  ASSERT_EQ(truncate(_home.path("tree/sparse").c_str(), 4 << 20), 0);
  ASSERT_EQ(link(_home.path("tree/inner/file").c_str(), _home.path("tree/twin").c_str()), 0);
  ASSERT_EQ(chmod(_home.path("tree/inner/file").c_str(), 0640), 0);
  ASSERT_EQ(lchown(_home.path("tree/inner/file").c_str(), 1234, 1235), 0);
  writeTagNames(tree, std::vector<std::string>{"Work"});
  setModificationTime(_home.url("tree/inner/file"), 1e9 + 0.25);
  setModificationTime(_home.url("tree/link"), 1.1e9);
  setModificationTime(_home.url("tree/inner"), 1.2e9);
  setModificationTime(tree, 1.3e9);
  const FileURL binned = trashItem(tree);

  const FileURL to = _drive.url("tree");
  moveItem(binned, to);

  EXPECT_FALSE(exists(binned));
  EXPECT_FALSE(exists(trash("info/tree.trashinfo")));
  EXPECT_EQ(namesIn(_drive.url()), (std::set<std::string>{"lost+found", "tree"}));
  const struct stat file = statusOf(_drive.url("tree/inner/file"));
  EXPECT_EQ(readFile(_drive.url("tree/inner/file")), "xxxxx");
  EXPECT_EQ(file.st_mode & 07777U, 0640U);
  EXPECT_EQ(file.st_uid, 1234U);
  EXPECT_EQ(file.st_gid, 1235U);
  EXPECT_EQ(file.st_mtim.tv_sec, 1'000'000'000);
  EXPECT_EQ(file.st_mtim.tv_nsec, 250'000'000);
  EXPECT_EQ(file.st_ino, statusOf(_drive.url("tree/twin")).st_ino);
  EXPECT_EQ(statusOf(_drive.url("tree/link")).st_mtim.tv_sec, 1'100'000'000);
  EXPECT_EQ(statusOf(_drive.url("tree/inner")).st_mtim.tv_sec, 1'200'000'000);
  EXPECT_EQ(statusOf(to).st_mtim.tv_sec, 1'300'000'000);
  EXPECT_TRUE(S_ISFIFO(statusOf(_drive.url("tree/inner/pipe")).st_mode));
  EXPECT_LT(statusOf(_drive.url("tree/sparse")).st_blocks, 64);
  EXPECT_EQ(readTagNames(to), std::vector<std::string>{"Work"});
}

TEST_F(MoveAcrossTest, CopesWithNamesThatACommandLineWouldMisread) {
  for (const std::string name : {"-rf", "--help", "a b", "*", "a\nb", "\xFF"}) {
    writeFile(_home.url(name), "content");
    moveItem(_home.url(name), _drive.url(name));
    EXPECT_EQ(readFile(_drive.url(name)), "content");
    EXPECT_FALSE(exists(_home.url(name)));
  }
}

TEST_F(MoveAcrossTest, LeavesTheItemWhereItWasIfItDoesNotFit) {
  makeTree(_home.url(), "tree/\n  small 3\n  large 50000000");
  const FileURL binned = trashItem(_home.url("tree"));
  try {
    moveItem(binned, _drive.url("tree"));
    FAIL() << "50 MB don't fit on 16";
  } catch (const PlatformError& error) {
    EXPECT_NE(std::string(error.what()).find("No space left on device"), std::string::npos)
        << error.what();
  }
  EXPECT_EQ(statusOf(FileURL(binned.path() + "/large")).st_size, 50'000'000);
  EXPECT_TRUE(exists(trash("info/tree.trashinfo")));
  EXPECT_EQ(namesIn(_drive.url()), std::set<std::string>{"lost+found"});
}

TEST_F(MoveAcrossTest, LeavesTheItemWhereItWasIfTheLastStepFails) {
  makeTree(_home.url(), "tree/\n  file 3");
  // Answers EXDEV for the first rename as well as for the one that puts the copy in place.
  withFailingSystemCall(SYS_renameat2, EXDEV, [&] {
    EXPECT_EQ(codeOf([&] { moveItem(_home.url("tree"), _drive.url("tree")); }), EXDEV);
  });
  EXPECT_EQ(readFile(_home.url("tree/file")), "xxx");
  EXPECT_EQ(namesIn(_drive.url()), std::set<std::string>{"lost+found"});
}

TEST_F(MoveAcrossTest, DeletesNothingUntilTheCopyIsOnTheDisk) {
  writeFile(_home.url("item"), "content");
  withFailingSystemCall(SYS_syncfs, EIO, [&] {
    EXPECT_EQ(codeOf([&] { moveItem(_home.url("item"), _drive.url("item")); }), EIO);
  });
  EXPECT_EQ(readFile(_home.url("item")), "content");
  EXPECT_EQ(namesIn(_drive.url()), std::set<std::string>{"lost+found"});

  withFailingSystemCall(SYS_fsync, EIO, [&] {
    EXPECT_EQ(codeOf([&] { moveItem(_home.url("item"), _drive.url("item")); }), EIO);
  });
  EXPECT_EQ(readFile(_home.url("item")), "content");
}

TEST_F(MoveAcrossTest, NeverReplacesWhatLiesAtTheNewPlace) {
  writeFile(_home.url("item"), "content");
  writeFile(_drive.url("item"), "kept");
  EXPECT_EQ(codeOf([&] { moveItem(_home.url("item"), _drive.url("item")); }), EEXIST);
  EXPECT_EQ(readFile(_drive.url("item")), "kept");
  EXPECT_EQ(readFile(_home.url("item")), "content");
}

TEST_F(MoveAcrossTest, RefusesADirectoryThatHoldsAMount) {
  makeTree(_home.url(), "item/\n  mount/");
  makeTree(_drive.url(), "precious/\n  file 3\nplace/");
  const BindMount mount(_drive.url("precious"), _home.url("item/mount"));
  ASSERT_TRUE(mount.isMounted()) << mount.reason();
  EXPECT_EQ(codeOf([&] { moveItem(_home.url("item"), _drive.url("place/item")); }), EXDEV);
  EXPECT_TRUE(namesIn(_drive.url("place")).empty());
  EXPECT_EQ(readFile(_drive.url("precious/file")), "xxx");
}

}  // namespace
}  // namespace tidemar
