#include <cerrno>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "Platform/Files/Bookmarks/BookmarkSearch.h"
#include "Platform/Files/Bookmarks/SearchPlaces.h"
#include "support/FailingSystemCall.h"
#include "support/FolderActions.h"
#include "support/ScopedEnvironment.h"
#include "support/SilentMount.h"
#include "support/TemporaryTree.h"
#include "support/TestFileSystems.h"

namespace tidemar {
namespace {

using namespace testing;

const std::string nowhere = "nowhere";

/// Where the search meets the directory of a bookmark.
std::string metFrom(const std::string& bookmark) {
  const auto found = searchForDirectory(*decodeBookmark(bookmark));
  return found ? found->path() : nowhere;
}

void rename(const FileURL& from, const FileURL& to) {
  ASSERT_EQ(std::rename(from.path().c_str(), to.path().c_str()), 0) << to.path();
}

void setDocumentsDirectory(const FileURL& home, const std::string& path) {
  const FileURL configuration = home.appendingPathComponent(".config");
  mkdir(configuration.path().c_str(), 0700);
  writeFile(configuration.appendingPathComponent("user-dirs.dirs"),
            "XDG_DOCUMENTS_DIR=\"" + path + "\"\n");
}

/// A home on a drive of its own, so that the search has no more to read than the test made.
class BookmarkSearchTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!_drive.isMounted()) GTEST_SKIP() << _drive.reason();
  }
  const FileURL& home() const { return _drive.url(); }
  FileURL url(const std::string& relative) const { return _drive.url(relative); }

  TestFileSystem _drive{TestFileSystem::Type::tmpfs};
  ScopedHome _environment{_drive.url()};
};

TEST_F(BookmarkSearchTest, MeetsADirectoryRenamedAmong200000Neighbours) {
  makeTree(home(), "old/\n  folder/");
  const std::string bookmark = makeBookmark(url("old/folder"));
  rename(url("old/folder"), url("old/renamed"));
  // A tmpfs lists what came last first.
  writeFile(url("old/file"), "");
  for (int i = 0; i < 200'000; ++i) {
    const std::string name = url("old/" + std::to_string(i)).path();
    ASSERT_EQ(link(url("old/file").path().c_str(), name.c_str()), 0);
  }
  EXPECT_EQ(metFrom(bookmark), url("old/renamed").path());
}

TEST_F(BookmarkSearchTest, GivesUpAfterABoundedNumberOfDirectories) {
  makeTree(home(), "old/\n  folder/\na/\n  b/");
  const std::string bookmark = makeBookmark(url("old/folder"));
  rename(url("old/folder"), url("a/b/folder"));
  EXPECT_EQ(metFrom(bookmark), url("a/b/folder").path());
  for (int i = 0; i < 20'000; ++i) {
    ASSERT_EQ(mkdir(url("old/" + std::to_string(i)).path().c_str(), 0700), 0);
  }
  EXPECT_EQ(metFrom(bookmark), nowhere);
  rename(url("a/b/folder"), url("a/folder"));
  EXPECT_EQ(metFrom(bookmark), nowhere);
  rename(url("a/folder"), url("folder"));
  EXPECT_EQ(metFrom(bookmark), url("folder").path()) << "the places where it begins are read";
}

TEST_F(BookmarkSearchTest, LooksWhereListingsDoNotTellWhatAnEntryIs) {
  TestFileSystem drive(TestFileSystem::Type::ext4);
  drive.unmount();
  drive.forgetEntryTypes();
  drive.mount();
  makeTree(drive.url(), "old/\n  folder/\na/\n  b/\n    c/\n  file 3\n  pipe |\n  link -> b");
  const std::string bookmark = makeBookmark(drive.url("old/folder"));
  rename(drive.url("old/folder"), drive.url("a/b/c/renamed"));
  EXPECT_EQ(metFrom(bookmark), drive.url("a/b/c/renamed").path());
}

TEST_F(BookmarkSearchTest, LooksInTheUsersDirectoriesByWhateverLinksTheyAreReached) {
  // What lies on the drive beside `part` can't be reached from the home.
  makeTree(home(), "part/\n  old/\n    folder/\nPapers/\n  deep/");
  const TemporaryDirectory place;
  const BindMount mount(url("part"), place.url());
  ASSERT_TRUE(mount.isMounted()) << mount.reason();
  const ScopedHome environment(place.url());
  makeTree(place.url(), "absolute -> " + url("Papers").path() + "\ndrive -> " + home().path() +
                            "\nfirst -> old/../second\nsecond -> ./drive/Papers\nloop -> loop\n"
                            "dangling -> nothing\nfile 3");
  const std::string bookmark = makeBookmark(place.url("old/folder"));
  rename(url("part/old/folder"), url("Papers/deep/renamed"));

  const std::string found = url("Papers/deep/renamed").path();
  const std::pair<std::string, std::string> rows[] = {
      {url("Papers").path(), found},     {url("Papers/deep/..//.").path(), found},
      {place.path("absolute"), found},   {place.path("drive/Papers"), found},
      {place.path("first"), found},      {place.path("loop"), nowhere},
      {place.path("dangling"), nowhere},
  };
  for (const auto& [documents, expected] : rows) {
    setDocumentsDirectory(place.url(), documents);
    EXPECT_EQ(metFrom(bookmark), expected) << documents;
  }
}

TEST_F(BookmarkSearchTest, DoesNotLookIntoAnotherMount) {
  makeTree(home(), "a/\n  folder/\nb/\n  inner/\nview/");
  const std::string bookmark = makeBookmark(url("a/folder"));
  rename(url("a/folder"), url("b/inner/folder"));
  // The same directory can be reached through the second mount, and earlier.
  const BindMount mount(url("b/inner/folder"), url("view"));
  ASSERT_TRUE(mount.isMounted()) << mount.reason();
  EXPECT_EQ(metFrom(bookmark), url("b/inner/folder").path());
}

TEST_F(BookmarkSearchTest, DoesNotTakeASnapshotForTheDirectory) {
  const TestFileSystem drive(TestFileSystem::Type::btrfs);
  makeTree(drive.url(), "folder/");
  const auto expectNowhereBesideASnapshot = [&] {
    const std::string bookmark = makeBookmark(drive.url("folder"));
    runCommand("btrfs subvolume snapshot " + drive.url().path() + " " + drive.url("snap").path());
    rename(drive.url("folder"), drive.url("moved"));
    EXPECT_EQ(metFrom(bookmark), drive.url("moved").path());
    ASSERT_EQ(rmdir(drive.url("moved").path().c_str()), 0);
    EXPECT_EQ(metFrom(bookmark), nowhere);
  };
  expectNowhereBesideASnapshot();
  runCommand("btrfs subvolume delete " + drive.url("snap").path());
  makeTree(drive.url(), "folder/");
  // Inode number and birth time are the same in both.
  withFailingSystemCall(SYS_name_to_handle_at, EOPNOTSUPP, expectNowhereBesideASnapshot);
}

TEST_F(BookmarkSearchTest, BeginsAtTheNearestPlacesThatAreStillThere) {
  makeTree(home(), "a/\n  b/\npart/");
  const TemporaryDirectory place;
  const BindMount mount(url("part"), place.url());
  const SearchPlaces places(url("a/b/gone/too/folder"));
  setDocumentsDirectory(home(), url("Papers").path());
  EXPECT_EQ(places.near(), (std::vector{url("a/b"), url("a"), url("Papers"), home()}));
  EXPECT_EQ(places.far()[0], home()) << "the mount of the old place";
  EXPECT_EQ(SearchPlaces(place.url("folder")).far()[0], place.url());
}

TEST_F(BookmarkSearchTest, EntersAMountOfAnotherKindOnlyOnTheWayToTheOldPlace) {
  makeTree(home(), "other/\nlink -> other");
  runCommand("mount -t ramfs server:/ " + url("other").path());
  makeTree(url("other"), "a/");
  for (const char* place : {"other", "other/a", "link/a"}) {
    EXPECT_TRUE(SearchPlaces(url("other/gone/folder")).open(url(place))) << place;
    EXPECT_FALSE(SearchPlaces(url("others/folder")).open(url(place))) << place;
  }
}

TEST_F(BookmarkSearchTest, TouchesNoMountThatMayNeverAnswer) {
  const struct {
    const char* mountPoint;
    const char* documents;
    const char* source = "server:/";
  } rows[] = {
      {"old/net", "a"},    {"old/a/net", "a"},        {"net", "net"},
      {"net", "link"},     {"net", "net/papers"},     {"net", "linkThrough/papers"},
      {"net", "net/../a"}, {"net", "a", "/dev/sda1"}, {"moved", "a"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.mountPoint) + ", " + row.documents);
    const TestFileSystem drive(TestFileSystem::Type::tmpfs);
    const ScopedHome environment(drive.url());
    makeTree(drive.url(),
             "old/\n  folder/\n  net/\n  a/\n    net/\na/\nnet/\nlink -> net\n"
             "linkThrough -> a/../net/inner");
    setDocumentsDirectory(drive.url(), drive.url(row.documents).path());
    const std::string bookmark = makeBookmark(drive.url("old/folder"));
    rename(drive.url("old/folder"), drive.url("moved"));
    const bool isCovered = row.mountPoint == std::string("moved");

    const SilentMount mount(drive.url(row.mountPoint), row.source);
    if (!mount.isMounted()) GTEST_SKIP() << mount.reason();
    EXPECT_EQ(metFrom(bookmark), isCovered ? nowhere : drive.url("moved").path());
    if (!isCovered) {
      ASSERT_EQ(rmdir(drive.url("moved").path().c_str()), 0);
      EXPECT_EQ(metFrom(bookmark), nowhere);
    }
    EXPECT_FALSE(mount.wasTouched());

    EXPECT_FALSE(exists(FileURL(drive.url(row.mountPoint).path() + "/x")));
    EXPECT_TRUE(mount.wasTouched()) << "the test would have seen it";
  }
}

}  // namespace
}  // namespace tidemar
