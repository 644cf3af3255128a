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

TEST_F(BookmarkTest, FollowsTheDirectoryAndTakesNothingElseForIt) {
  const struct {
    const char* command;  ///< Of the shell, where $F is the directory.
    const char* found = nullptr;
  } rows[] = {
      {"mv $F old/parent/renamed", "old/parent/renamed"},
      {"mv $F old/other", "old/other/folder"},
      {"mv $F a/b/c", "a/b/c/folder"},
      {"mv $F .hidden", ".hidden/folder"},
      {"mv old z", "z/parent/folder"},
      {"mv $F moved; mkdir $F", "moved"},
      {"mv $F moved; ln -s ../../moved $F", "moved"},
      {"mkdir Trash; mv $F Trash", "Trash/folder"},
      {"mkdir .Trash-notes; mv $F .Trash-notes", ".Trash-notes/folder"},
      {"mkdir .Trash; mv $F .Trash"},
      {"mkdir .Trash-1000; mv $F .Trash-1000"},
      {"mkdir -p .local/share/Trash/files; mv $F .local/share/Trash/files"},
      {"rmdir $F"},
      {"rmdir $F; touch $F"},
      {"rmdir $F; mkfifo $F"},
      {"rmdir $F; ln -s ../other $F"},
      {"rmdir $F; ln -s nowhere $F"},
  };
  for (const auto& row : rows) {
    const TemporaryDirectory home;
    const ScopedHome environment(home.url());
    makeTree(home.url(),
             "old/\n  parent/\n    folder/\n  other/\na/\n  b/\n    c/\n.hidden/\nlink -> old");
    const std::string bookmark = makeBookmark(home.url("link/parent/folder"));
    EXPECT_EQ(whereFrom(bookmark), home.path("old/parent/folder"));
    runCommand("cd '" + home.path() + "' && { F=old/parent/folder; " + row.command + "; }");
    const std::string found = row.found == nullptr ? none : home.path(row.found) + " (stale)";
    EXPECT_EQ(whereFrom(bookmark), found) << row.command;
  }
}

TEST_F(BookmarkTest, OfADirectoryInATrashLeadsNowhere) {
  makeTree(_home.url(), "folder/");
  const FileURL binned = trashItem(_home.url("folder"));
  const std::string bookmark = makeBookmark(binned);
  EXPECT_EQ(whereFrom(bookmark), none) << "not even at its remembered path";
  rename(binned, FileURL(binned.path() + " renamed"));
  EXPECT_EQ(whereFrom(bookmark), none) << "nor beside it";
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
  for (const std::string& damaged : {std::string(), directory.path(), bookmark + "x"})
    EXPECT_EQ(whereFrom(damaged), "none: " + std::to_string(EINVAL));
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

TEST_P(BookmarkOnADrive, OutlivesTheDrivesAbsenceAndFollowsAMoveThatNobodySaw) {
  const FileURL mountPoint = _drive.url();
  _drive.unmount();
  EXPECT_EQ(whereFrom(_bookmark), none);
  makeTree(mountPoint, "a/\n  folder/");
  EXPECT_EQ(whereFrom(_bookmark), none) << "the mount point's own directory is another folder";
  _drive.mount();
  EXPECT_EQ(whereFrom(_bookmark), _drive.url("a/folder").path());
  std::filesystem::rename(_drive.url("a/folder").path(), _drive.url("b/renamed").path());
  _drive.unmount();
  _drive.mountElsewhere();
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
