#include "Platform/Files/Bookmarks/BookmarkRecord.h"
#include "Platform/Files/Bookmarks/SearchPlaces.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

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

/// A home on a drive of its own, so that the search has no more to read than the test made.
class BookmarkTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!_homeDrive.isMounted()) GTEST_SKIP() << _homeDrive.reason();
  }
  const FileURL& home() const { return _homeDrive.url(); }
  FileURL url(const std::string& relative) const { return _homeDrive.url(relative); }

  TestFileSystem _homeDrive{TestFileSystem::Type::tmpfs};
  ScopedHome _environment{home()};
};

TEST_F(BookmarkTest, FollowsTheDirectoryAndTakesNothingElseForIt) {
  // A command of the shell, where $F is the directory, and what is found then.
  const std::pair<std::string, const char*> rows[] = {
      {"mv $F old/parent/renamed", "old/parent/renamed (stale)"},
      {"mv $F old/other", "old/other/folder (stale)"},
      {"mv $F a/b/c", "a/b/c/folder (stale)"},
      {"mv $F .hidden", ".hidden/folder (stale)"},
      {"mv old z", "z/parent/folder (stale)"},
      {"mv $F moved; mkdir $F", "moved (stale)"},
      {"mv $F moved; ln -s ../../moved $F", "moved (stale)"},
      {"mkdir Trash; mv $F Trash", "Trash/folder (stale)"},
      {"mkdir .Trash-notes; mv $F .Trash-notes", ".Trash-notes/folder (stale)"},
      {"mkdir .Trash; mv $F .Trash", nullptr},
      {"mkdir .Trash-1000; mv $F .Trash-1000", nullptr},
      {"mkdir -p .local/share/Trash/files; mv $F .local/share/Trash/files", nullptr},
      {"rmdir $F; mkdir $F", "old/parent/folder (replaced)"},
      {"rmdir $F", nullptr},
      {"rmdir $F; touch $F", nullptr},
      {"rmdir $F; mkfifo $F", nullptr},
      {"rmdir $F; ln -s ../other $F", nullptr},
      {"rmdir $F; ln -s nowhere $F", nullptr},
  };
  const auto expectFollows = [&] {
    for (const auto& [command, found] : rows) {
      const TemporaryDirectory place(home().path());
      const ScopedHome environment(place.url());
      makeTree(place.url(),
               "old/\n  parent/\n    folder/\n  other/\na/\n  b/\n    c/\n.hidden/\nlink -> old");
      const std::string bookmark = makeBookmark(place.url("link/parent/folder"));
      EXPECT_EQ(whereFrom(bookmark), place.path("old/parent/folder"));
      runCommand("cd '" + place.path() + "' && { F=old/parent/folder; " + command + "; }");
      EXPECT_EQ(whereFrom(bookmark), found == nullptr ? none : place.path(found)) << command;
    }
  };
  expectFollows();
  // By birth times, where there are no handles.
  withFailingSystemCall(SYS_name_to_handle_at, EOPNOTSUPP, expectFollows);
}

TEST_F(BookmarkTest, OfADirectoryInATrashLeadsNowhere) {
  makeTree(home(), "folder/");
  const FileURL binned = trashItem(url("folder"));
  const std::string bookmark = makeBookmark(binned);
  EXPECT_EQ(whereFrom(bookmark), none) << "not even at its remembered path";
  rename(binned, FileURL(binned.path() + " renamed"));
  EXPECT_EQ(whereFrom(bookmark), none) << "nor beside it";
}

TEST(BookmarkRecord, ThatIsDamagedLeadsNowhere) {
  const TemporaryDirectory directory;
  const std::string bookmark = makeBookmark(directory.url());
  for (const std::string& damaged : {std::string(), directory.path(), bookmark + "x"})
    EXPECT_EQ(whereFrom(damaged), "none: " + std::to_string(EINVAL));
  EXPECT_TRUE(isOf(bookmark, directory.url()));
  EXPECT_FALSE(isOf(bookmark + "x", directory.url()));
}

class BookmarkOnADrive : public BookmarkTest,
                         public ::testing::WithParamInterface<TestFileSystem::Type> {
 protected:
  void SetUp() override {
    if (!_drive.isMounted()) GTEST_SKIP() << _drive.reason();
    makeTree(_drive.url(), "a/\n  folder/\nb/");
    _bookmark = makeBookmark(_drive.url("a/folder"));
  }

  TestFileSystem _drive{GetParam()};
  std::string _bookmark;
};
INSTANTIATE_TEST_SUITE_P(Platform, BookmarkOnADrive,
                         ::testing::Values(TestFileSystem::Type::ext4, TestFileSystem::Type::xfs,
                                           TestFileSystem::Type::btrfs),
                         [](const auto& type) { return nameOf(type.param); });

TEST_P(BookmarkOnADrive, OutlivesTheDrivesAbsenceAndAMoveThatNobodySawAndTakesNoCopyForIt) {
  const FileURL mountPoint = _drive.url();
  _drive.unmount();
  EXPECT_EQ(whereFrom(_bookmark), none);
  makeTree(mountPoint, "a/\n  folder/");
  try {
    resolveBookmark(_bookmark);
    ADD_FAILURE() << "the mount point's own directory is another folder";
  } catch (const PlatformError& error) {
    EXPECT_EQ(error.reason(), "the drive that it lies on isn't connected");
  }
  _drive.mount();
  EXPECT_EQ(whereFrom(_bookmark), _drive.url("a/folder").path());
  rename(_drive.url("a/folder"), _drive.url("b/renamed"));
  _drive.unmount();
  _drive.mountElsewhere();
  EXPECT_EQ(whereFrom(_bookmark), _drive.url("b/renamed").path() + " (stale)");
  EXPECT_TRUE(isOf(_bookmark, _drive.url("b/renamed")));
  EXPECT_FALSE(isOf(_bookmark, _drive.url("b")));

  if (GetParam() != TestFileSystem::Type::ext4) return;
  _drive.unmount();
  runCommand("e2fsck -f -p " + _drive.image() + " && tune2fs -f -U random " + _drive.image());
  _drive.mount();
  EXPECT_FALSE(isOf(_bookmark, _drive.url("b/renamed")));
  EXPECT_EQ(whereFrom(_bookmark), none);
}

TEST_P(BookmarkOnADrive, IsNotDeceivedByAnInodeNumberThatIsUsedAgain) {
  const auto inodeOf = [&](const std::string& name) {
    return runCommand("stat -c %i '" + _drive.url(name).path() + "'");
  };
  const std::string inode = inodeOf("a/folder");
  ASSERT_EQ(rmdir(_drive.url("a/folder").path().c_str()), 0);
  makeTree(_drive.url("a"), "impostor/");
  if (GetParam() == TestFileSystem::Type::ext4) {
    ASSERT_EQ(inodeOf("a/impostor"), inode) << "the test needs the number again";
  }
  EXPECT_EQ(whereFrom(_bookmark), none);
  withFailingSystemCall(SYS_name_to_handle_at, EOPNOTSUPP,
                        [&] { EXPECT_EQ(whereFrom(_bookmark), none) << "by the birth time"; });

  rename(_drive.url("a/impostor"), _drive.url("a/folder"));
  EXPECT_FALSE(isOf(_bookmark, _drive.url("a/folder")));
  EXPECT_EQ(whereFrom(_bookmark), _drive.url("a/folder").path() + " (replaced)");
}

void setDocumentsDirectory(const FileURL& home, const std::string& path) {
  const FileURL configuration = home.appendingPathComponent(".config");
  std::filesystem::create_directory(configuration.path());
  writeFile(configuration.appendingPathComponent("user-dirs.dirs"),
            "XDG_DOCUMENTS_DIR=\"" + path + "\"\n");
}

TEST_F(BookmarkTest, MeetsADirectoryRenamedAmong200000Neighbours) {
  makeTree(home(), "old/\n  folder/");
  const std::string bookmark = makeBookmark(url("old/folder"));
  rename(url("old/folder"), url("old/renamed"));
  // A tmpfs lists what came last first.
  writeFile(url("old/file"), "");
  for (int i = 0; i < 200'000; ++i) {
    const std::string name = url("old/" + std::to_string(i)).path();
    ASSERT_EQ(link(url("old/file").path().c_str(), name.c_str()), 0);
  }
  EXPECT_EQ(whereFrom(bookmark), url("old/renamed").path() + " (stale)");
}

TEST_F(BookmarkTest, GivesUpAfterABoundedNumberOfDirectories) {
  makeTree(home(), "old/\n  folder/\na/\n  b/");
  const std::string bookmark = makeBookmark(url("old/folder"));
  rename(url("old/folder"), url("a/b/folder"));
  EXPECT_EQ(whereFrom(bookmark), url("a/b/folder").path() + " (stale)");
  for (int i = 0; i < 20'000; ++i) {
    ASSERT_EQ(mkdir(url("old/" + std::to_string(i)).path().c_str(), 0700), 0);
  }
  EXPECT_EQ(whereFrom(bookmark), none);
  rename(url("a/b/folder"), url("a/folder"));
  EXPECT_EQ(whereFrom(bookmark), none);
  rename(url("a/folder"), url("folder"));
  EXPECT_EQ(whereFrom(bookmark), url("folder").path() + " (stale)")
      << "the places where it begins are read";
}

TEST_F(BookmarkTest, LooksWhereListingsDoNotTellWhatAnEntryIs) {
  TestFileSystem drive(TestFileSystem::Type::ext4);
  drive.unmount();
  // e2fsck answers 1 when it has put right what it found.
  runCommand("I=" + drive.image() + "; tune2fs -O ^filetype $I; e2fsck -f -y $I || test $? = 1");
  drive.mount();
  makeTree(drive.url(), "old/\n  folder/\na/\n  b/\n    c/\n  file 3\n  pipe |\n  link -> b");
  const std::string bookmark = makeBookmark(drive.url("old/folder"));
  rename(drive.url("old/folder"), drive.url("a/b/c/renamed"));
  EXPECT_EQ(whereFrom(bookmark), drive.url("a/b/c/renamed").path() + " (stale)");
}

TEST_F(BookmarkTest, LooksInTheUsersDirectoriesByWhateverLinksTheyAreReached) {
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

  const std::string found = url("Papers/deep/renamed").path() + " (stale)";
  const std::pair<std::string, std::string> rows[] = {
      {url("Papers").path(), found},   {url("Papers/deep/..//.").path(), found},
      {place.path("absolute"), found}, {place.path("drive/Papers"), found},
      {place.path("first"), found},    {place.path("loop"), none},
      {place.path("dangling"), none},
  };
  for (const auto& [documents, expected] : rows) {
    setDocumentsDirectory(place.url(), documents);
    EXPECT_EQ(whereFrom(bookmark), expected) << documents;
  }
}

TEST_F(BookmarkTest, DoesNotEvenOpenAMountPointAndNoLinkThatComesMeanwhile) {
  makeTree(home(), "old/\n  folder/\na/\nview/");
  const std::string bookmark = makeBookmark(url("old/folder"));
  std::filesystem::remove(url("old/folder").path());
  const auto openedDirectories = [&] {
    int count = 0;
    withActionBefore(
        SYS_openat2, [&](int call) { count = call; },
        [&] { EXPECT_EQ(whereFrom(bookmark), none); });
    return count;
  };
  const int before = openedDirectories();
  const BindMount mount(url("a"), url("view"));
  ASSERT_TRUE(mount.isMounted()) << mount.reason();
  EXPECT_EQ(openedDirectories(), before - 1) << "an automount would be set off by that";

  withActionBefore(
      SYS_openat2,
      [&](int call) {
        if (call > 1) return;
        rename(url("old"), url("moved"));
        makeTree(home(), "old -> a");
      },
      [&] { EXPECT_FALSE(SearchPlaces(url("x/folder")).open(url("old"))); });
}

TEST_F(BookmarkTest, TellsASubvolumeFromOthersAndFromItsSnapshot) {
  const TestFileSystem drive(TestFileSystem::Type::btrfs);
  if (!drive.isMounted()) GTEST_SKIP() << drive.reason();
  const auto btrfs = [&](const std::string& command) {
    runCommand("cd '" + drive.url().path() + "' && btrfs subvolume " + command);
  };
  const auto expectFollows = [&](const char* name) {
    const std::string bookmark = makeBookmark(drive.url(name));
    EXPECT_EQ(whereFrom(bookmark), drive.url(name).path());
    btrfs("snapshot . snap");
    rename(drive.url(name), drive.url("moved"));
    EXPECT_EQ(whereFrom(bookmark), drive.url("moved").path() + " (stale)");
    EXPECT_TRUE(isOf(bookmark, drive.url("moved")));
    EXPECT_FALSE(isOf(bookmark, drive.url("other")));
    ASSERT_EQ(rmdir(drive.url("moved").path().c_str()), 0);
    EXPECT_EQ(whereFrom(bookmark), none);
    btrfs("delete snap");
  };
  btrfs("create other");
  btrfs("create volume");  // Every subvolume has the same inode number.
  expectFollows("volume");
  makeTree(drive.url(), "folder/");
  expectFollows("folder");
  makeTree(drive.url(), "folder/");
  // Inode number and birth time are the same in the snapshot, too.
  withFailingSystemCall(SYS_name_to_handle_at, EOPNOTSUPP, [&] { expectFollows("folder"); });
}

TEST_F(BookmarkTest, BeginsAtTheNearestPlacesThatAreStillThere) {
  makeTree(home(), "a/\n  b/\npart/");
  const TemporaryDirectory place;
  const BindMount mount(url("part"), place.url());
  const SearchPlaces places(url("a/b/gone/too/folder"));
  setDocumentsDirectory(home(), url("Papers").path());
  EXPECT_EQ(places.near(), (std::vector{url("a/b"), url("a"), url("Papers"), home()}));
  EXPECT_EQ(places.far()[0], home()) << "the mount of the old place";
  EXPECT_EQ(SearchPlaces(place.url("folder")).far()[0], place.url());
}

TEST_F(BookmarkTest, EntersAMountOfAnotherKindOnlyOnTheWayToTheOldPlace) {
  makeTree(home(), "other/\nlink -> other");
  runCommand("mount -t ramfs server:/ " + url("other").path());
  makeTree(url("other"), "a/");
  for (const char* place : {"other", "other/a", "link/a"}) {
    EXPECT_TRUE(SearchPlaces(url("other/gone/folder")).open(url(place))) << place;
    EXPECT_FALSE(SearchPlaces(url("others/folder")).open(url(place))) << place;
  }
}

TEST_F(BookmarkTest, TouchesNoMountThatMayNeverAnswer) {
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
    EXPECT_EQ(whereFrom(bookmark), isCovered ? none : drive.url("moved").path() + " (stale)");
    if (!isCovered) {
      ASSERT_EQ(rmdir(drive.url("moved").path().c_str()), 0);
      EXPECT_EQ(whereFrom(bookmark), none);
    }
    EXPECT_FALSE(mount.wasTouched());

    EXPECT_FALSE(exists(FileURL(drive.url(row.mountPoint).path() + "/x")));
    EXPECT_TRUE(mount.wasTouched()) << "the test would have seen it";
  }
}

}  // namespace
}  // namespace tidemar::testing
