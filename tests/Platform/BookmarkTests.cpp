#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "Platform/Files/Bookmarks/BookmarkRecord.h"
#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/PlatformError.h"
#include "support/FailingSystemCall.h"
#include "support/FolderActions.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryTree.h"
#include "support/TestFileSystems.h"

namespace tidemar {
namespace {

using namespace testing;

/// Where a bookmark leads: the path, with " (stale)" or " (replaced)" behind it, or "none:
/// {errno}".
std::string whereFrom(const std::string& bookmark) {
  try {
    const ResolvedBookmark resolved = resolveBookmark(bookmark);
    EXPECT_TRUE(resolved.isStale || !resolved.isReplacement);
    return resolved.url.path() + (resolved.isReplacement ? " (replaced)"
                                  : resolved.isStale     ? " (stale)"
                                                         : "");
  } catch (const PlatformError& error) {
    EXPECT_TRUE(std::string(error.what()).starts_with("Couldn't find “")) << error.what();
    return "none: " + std::to_string(error.code());
  }
}

/// Whether a bookmark remembers the directory that lies at this place now.
bool isOf(const std::string& bookmark, const FileURL& url) {
  const FileDescriptor directory(open(url.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  EXPECT_TRUE(directory) << url.path();
  return isBookmarkOf(bookmark, directory.get(), url);
}

const std::string none = "none: " + std::to_string(ENOENT);

void rename(const FileURL& from, const FileURL& to) {
  ASSERT_EQ(std::rename(from.path().c_str(), to.path().c_str()), 0) << to.path();
}

class BookmarkTest : public ::testing::Test {
 protected:
  TemporaryDirectory _home;
  ScopedHome _environment{_home.url()};
};

TEST_F(BookmarkTest, FollowsAMovedDirectory) {
  const struct {
    const char* title;
    const char* to;
  } rows[] = {
      {"not at all", "old/parent/folder"},
      {"renamed", "old/parent/renamed"},
      {"to the parent's neighbour", "old/other/folder"},
      {"to a place deep in the home", "a/b/c/folder"},
      {"under a hidden directory", ".hidden/folder"},
  };
  for (const auto& row : rows) {
    const TemporaryDirectory home;
    const ScopedHome environment(home.url());
    makeTree(home.url(),
             "old/\n  parent/\n    folder/\n  other/\na/\n  b/\n    c/\n.hidden/\nlink -> old");
    const FileURL folder = home.url("old/parent/folder");
    const std::string bookmark = makeBookmark(folder);
    const bool isMoved = home.url(row.to) != folder;
    if (isMoved) rename(folder, home.url(row.to));
    EXPECT_EQ(whereFrom(bookmark), home.path(row.to) + (isMoved ? " (stale)" : "")) << row.title;
  }
}

TEST_F(BookmarkTest, FollowsADirectoryWhoseParentWasRenamed) {
  makeTree(_home.url(), "a/\n  b/\n    folder/");
  const std::string bookmark = makeBookmark(_home.url("a/b/folder"));
  rename(_home.url("a"), _home.url("z"));
  EXPECT_EQ(whereFrom(bookmark), _home.path("z/b/folder") + " (stale)");
}

TEST_F(BookmarkTest, PrefersTheMovedDirectoryToANewOneAtItsPlace) {
  makeTree(_home.url(), "folder/");
  const std::string bookmark = makeBookmark(_home.url("folder"));
  rename(_home.url("folder"), _home.url("moved"));
  makeTree(_home.url(), "folder/");
  EXPECT_EQ(whereFrom(bookmark), _home.path("moved") + " (stale)");
}

TEST_F(BookmarkTest, RemembersThePathWithoutLinks) {
  makeTree(_home.url(), "real/\n  folder/\nlink -> real");
  EXPECT_EQ(whereFrom(makeBookmark(_home.url("link/folder"))), _home.path("real/folder"));
}

TEST_F(BookmarkTest, DoesNotTakeAnythingElseForTheDirectory) {
  const struct {
    const char* title;
    const char* instead;
  } rows[] = {
      {"nothing", ""},
      {"a file", "folder 3"},
      {"a FIFO, which it doesn't wait for", "folder |"},
      {"a link to another directory", "folder -> other"},
      {"a link to nothing", "folder -> nowhere"},
  };
  for (const auto& row : rows) {
    const TemporaryDirectory home;
    const ScopedHome environment(home.url());
    makeTree(home.url(), "folder/\nother/");
    const std::string bookmark = makeBookmark(home.url("folder"));
    ASSERT_EQ(rmdir(home.path("folder").c_str()), 0);
    makeTree(home.url(), row.instead);
    EXPECT_EQ(whereFrom(bookmark), none) << row.title;
  }
}

TEST_F(BookmarkTest, FollowsADirectoryWhoseOldPlaceIsALinkToIt) {
  makeTree(_home.url(), "folder/");
  const std::string bookmark = makeBookmark(_home.url("folder"));
  rename(_home.url("folder"), _home.url("moved"));
  makeTree(_home.url(), "folder -> moved");
  EXPECT_EQ(whereFrom(bookmark), _home.path("moved") + " (stale)");
}

TEST_F(BookmarkTest, DoesNotFindADirectoryInATrash) {
  makeTree(_home.url(), "folder/");
  const std::string bookmark = makeBookmark(_home.url("folder"));
  const FileURL binned = trashItem(_home.url("folder"));
  EXPECT_EQ(whereFrom(bookmark), none);
  const std::string bookmarkInTrash = makeBookmark(binned);
  EXPECT_EQ(whereFrom(bookmarkInTrash), none) << "not even at its remembered path";
  const FileURL renamed(binned.path() + " renamed");
  rename(binned, renamed);
  EXPECT_EQ(whereFrom(bookmarkInTrash), none) << "nor beside it";
  rename(renamed, binned);

  for (const char* place : {".Trash", ".Trash-1000"}) {
    makeTree(_home.url(), std::string(place) + "/");
    rename(FileURL(binned), _home.url(std::string(place) + "/folder"));
    EXPECT_EQ(whereFrom(bookmark), none) << place;
    rename(_home.url(std::string(place) + "/folder"), binned);
  }
  makeTree(_home.url(), "Trash/\n.Trash-notes/");
  for (const char* place : {"Trash/folder", ".Trash-notes/folder"}) {
    rename(binned, _home.url(place));
    EXPECT_EQ(whereFrom(bookmark), _home.path(place) + " (stale)");
    rename(_home.url(place), binned);
  }
}

TEST_F(BookmarkTest, ComparesBirthTimesWhereThereAreNoHandles) {
  makeTree(_home.url(), "folder/");
  withFailingSystemCall(SYS_name_to_handle_at, EOPNOTSUPP, [&] {
    const std::string bookmark = makeBookmark(_home.url("folder"));
    EXPECT_EQ(whereFrom(bookmark), _home.path("folder"));
    rename(_home.url("folder"), _home.url("moved"));
    EXPECT_EQ(whereFrom(bookmark), _home.path("moved") + " (stale)");
    ASSERT_EQ(rmdir(_home.path("moved").c_str()), 0);
    makeTree(_home.url(), "folder/");
    EXPECT_EQ(whereFrom(bookmark), _home.path("folder") + " (replaced)");
  });
}

TEST(BookmarkRecord, OfDamagedBytesIsNone) {
  BookmarkRecord record;
  record.path = "/home/u/folder";
  record.fileSystem = {FileSystemIdentity::Kind::uuid, "0001-0002"};
  record.directory = {42, BirthTime{-1, 5}, FileHandle{-2, std::string("\0\xFF", 2)}};
  const std::string bytes = encodeBookmark(record);
  EXPECT_EQ(decodeBookmark(bytes), record);

  for (std::size_t size = 0; size < bytes.size(); ++size) {
    EXPECT_FALSE(decodeBookmark(bytes.substr(0, size))) << "cut to " << size;
  }
  EXPECT_FALSE(decodeBookmark(bytes + '\0')) << "something behind the end";
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    for (const char value : {'\0', '\x01', '\x7F', '\xFF'}) {
      std::string damaged = bytes;
      damaged[i] = value;
      const auto decoded = decodeBookmark(damaged);
      if (decoded && damaged != bytes) {
        EXPECT_NE(*decoded, record) << i;
        EXPECT_TRUE(decoded->path.starts_with('/')) << i;
        EXPECT_EQ(decoded->path.find('\0'), std::string::npos) << i;
      }
    }
  }
  std::string ofLaterVersion = bytes;
  ofLaterVersion[8] = 2;
  EXPECT_FALSE(decodeBookmark(ofLaterVersion));
}

TEST(BookmarkRecord, ThatIsDamagedLeadsNowhere) {
  const TemporaryDirectory directory;
  const std::string bookmark = makeBookmark(directory.url());
  const std::string invalid = "none: " + std::to_string(EINVAL);
  EXPECT_EQ(whereFrom(""), invalid);
  EXPECT_EQ(whereFrom(directory.path()), invalid);
  EXPECT_EQ(whereFrom(bookmark.substr(0, bookmark.size() - 1)), invalid);
  EXPECT_EQ(whereFrom(bookmark + "x"), invalid);
  EXPECT_TRUE(isOf(bookmark, directory.url()));
  EXPECT_FALSE(isOf(bookmark + "x", directory.url()));
}

class BookmarkOnADrive : public ::testing::TestWithParam<TestFileSystem::Type> {
 protected:
  void SetUp() override {
    if (!_drive.isMounted()) GTEST_SKIP() << _drive.reason();
    makeTree(_drive.url(), "a/\n  folder/\nb/");
    _bookmark = makeBookmark(_drive.url("a/folder"));
  }

  TemporaryDirectory _home;
  ScopedHome _environment{_home.url()};
  TestFileSystem _drive{GetParam()};
  std::string _bookmark;
};
INSTANTIATE_TEST_SUITE_P(Platform, BookmarkOnADrive,
                         ::testing::Values(TestFileSystem::Type::ext4, TestFileSystem::Type::xfs,
                                           TestFileSystem::Type::btrfs),
                         [](const auto& type) { return nameOf(type.param); });

TEST_P(BookmarkOnADrive, OutlivesTheDrivesAbsence) {
  const FileURL mountPoint = _drive.url();
  _drive.unmount();
  EXPECT_EQ(whereFrom(_bookmark), none);
  makeTree(mountPoint, "a/\n  folder/");
  EXPECT_EQ(whereFrom(_bookmark), none) << "the mount point's own directory is another folder";
  _drive.mount();
  EXPECT_EQ(whereFrom(_bookmark), _drive.url("a/folder").path());
  _drive.unmount();
  _drive.mountElsewhere();
  EXPECT_EQ(whereFrom(_bookmark), _drive.url("a/folder").path() + " (stale)");
}

TEST_P(BookmarkOnADrive, FollowsAMoveThatNobodySaw) {
  std::filesystem::rename(_drive.url("a/folder").path(), _drive.url("b/renamed").path());
  _drive.unmount();
  _drive.mount();
  EXPECT_EQ(whereFrom(_bookmark), _drive.url("b/renamed").path() + " (stale)");
  EXPECT_TRUE(isOf(_bookmark, _drive.url("b/renamed")));
  EXPECT_FALSE(isOf(_bookmark, _drive.url("b")));
}

TEST_P(BookmarkOnADrive, IsNotDeceivedByAnInodeNumberThatIsUsedAgain) {
  const auto inodeOf = [](const FileURL& url) {
    struct stat values {};
    EXPECT_EQ(stat(url.path().c_str(), &values), 0);
    return values.st_ino;
  };
  const ino_t inode = inodeOf(_drive.url("a/folder"));
  ASSERT_EQ(rmdir(_drive.url("a/folder").path().c_str()), 0);
  makeTree(_drive.url("a"), "impostor/");
  if (GetParam() == TestFileSystem::Type::ext4) {
    ASSERT_EQ(inodeOf(_drive.url("a/impostor")), inode) << "the test needs the number again";
  }
  EXPECT_EQ(whereFrom(_bookmark), none);

  std::filesystem::rename(_drive.url("a/impostor").path(), _drive.url("a/folder").path());
  EXPECT_FALSE(isOf(_bookmark, _drive.url("a/folder")));
  EXPECT_EQ(whereFrom(_bookmark), _drive.url("a/folder").path() + " (replaced)");
}

TEST_F(BookmarkTest, FollowsASubvolumeAndTellsItFromOthers) {
  const TestFileSystem drive(TestFileSystem::Type::btrfs);
  if (!drive.isMounted()) GTEST_SKIP() << drive.reason();
  const std::string create = "btrfs subvolume create ";
  runCommand(create + drive.url("other").path());
  runCommand(create + drive.url("volume").path());
  const std::string bookmark = makeBookmark(drive.url("volume"));
  EXPECT_EQ(whereFrom(bookmark), drive.url("volume").path());
  rename(drive.url("volume"), drive.url("moved"));
  EXPECT_EQ(whereFrom(bookmark), drive.url("moved").path() + " (stale)");
  EXPECT_TRUE(isOf(bookmark, drive.url("moved")));
  EXPECT_FALSE(isOf(bookmark, drive.url("other")));
  runCommand("btrfs subvolume delete " + drive.url("moved").path());
  EXPECT_EQ(whereFrom(bookmark), none) << "every subvolume has the same inode number";
}

TEST_F(BookmarkTest, IsNotDeceivedByACopyOfTheDrive) {
  TestFileSystem drive(TestFileSystem::Type::ext4);
  if (!drive.isMounted()) GTEST_SKIP() << drive.reason();
  makeTree(drive.url(), "folder/");
  const std::string bookmark = makeBookmark(drive.url("folder"));
  drive.unmount();
  drive.changeUUID();
  drive.mount();
  EXPECT_FALSE(isOf(bookmark, drive.url("folder")));
  EXPECT_EQ(whereFrom(bookmark), none);
}

}  // namespace
}  // namespace tidemar
