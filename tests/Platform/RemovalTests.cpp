#include <linux/fs.h>
#include <sys/ioctl.h>

#include "Platform/FolderAndBin.h"

namespace tidemar::testing {
namespace {

/// The code of the error that deleting an item ends in, 0 for none.
int removalCode(const FileURL& url) {
  return codeOf([&] { removeItem(url); });
}

/// The code in which both ways out of a folder end, to the Bin and for good.
int codeOfBothWays(const FileURL& url) {
  const int code = removalCode(url);
  EXPECT_EQ(codeOf([&] { trashItem(url); }), code) << url.path();
  return code;
}

/// A folder with an item in it that most of these tests must leave whole.
class Removal : public FolderAndBin {
 protected:
  Removal() { makeTree(folder(""), "item/\n  file\n  sub/\n    deep/\n      leaf"); }

  std::string path(const std::string& inFolder) const { return folder(inFolder).path(); }
  bool isWhole() const {
    return exists(folder("item/file")) && exists(folder("item/sub/deep/leaf"));
  }
};

TEST_F(Removal, RefusesWhatIsNoEntry) {
  using namespace std::string_literals;
  for (const std::string& name : {"item/.."s, "item/."s, "missing"s, "item\0/x"s})
    EXPECT_NE(codeOfBothWays(folder(name)), 0) << name;
  EXPECT_NE(codeOfBothWays(FileURL("/")), 0);
  EXPECT_NE(codeOfBothWays(FileURL()), 0);
  EXPECT_TRUE(isWhole());
}

TEST_F(Removal, LeavesWhatCouldNotGoWhole) {
  const auto expectStays = [&](const std::string& obstacle, mode_t mode) {
    asOrdinaryUser(home(""), [&] {
      setMode(folder(obstacle), mode);
      EXPECT_EQ(removalCode(folder("item")), EACCES) << obstacle << " " << mode;
      setMode(folder(obstacle), 0700);
    });
  };
  expectStays("item/sub/deep", 0);
  expectStays("item/sub/deep", 0500);
  expectStays("", 0500);
  withFailingSystemCall(SYS_unlinkat, ENOENT,
                        [&] { EXPECT_EQ(removalCode(folder("item")), ENOENT); });
  EXPECT_TRUE(isWhole());

  const FileDescriptor leaf(::open(path("item/sub/deep/leaf").c_str(), O_RDONLY));
  int flags = FS_IMMUTABLE_FL;
  if (ioctl(leaf.get(), FS_IOC_SETFLAGS, &flags) == 0) {
    EXPECT_EQ(removalCode(folder("item")), EPERM);
    EXPECT_TRUE(isWhole());
    flags = 0;
    ioctl(leaf.get(), FS_IOC_SETFLAGS, &flags);
  }

  erase(folder("item/file"));
  expectStays("item", 0500);
  EXPECT_TRUE(exists(folder("item/sub/deep/leaf"))) << "not even what lies deeper goes";
}

TEST_F(Removal, AFileOfAnotherUserInAStickyDirectoryKeepsTheWholeItem) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  runIn(folder("item"), "mkdir a z; touch a/leaf z/leaf; chmod 1777 sub");
  runIn(folder("item"), "chown nobody ../.. .. . a a/leaf z z/leaf");
  asOrdinaryUser(folder("item/a"), [&] {
    EXPECT_EQ(removalCode(folder("item")), EPERM);
    makeTree(folder("item/a"), "ok/\n  empty/");
    setMode(folder("item/a/ok/empty"), 0500);
    EXPECT_EQ(removalCode(folder("item/a/ok")), 0) << "nothing lies in what is locked";
  });
  EXPECT_TRUE(isWhole());
  EXPECT_TRUE(exists(folder("item/a/leaf")) && exists(folder("item/z/leaf")));
}

TEST_F(Removal, TakesNoFolderThatIsNeverClearedWithAnItem) {
  makeTree(folder(""), "home -> item/sub/deep\nsub -> item\nother/");
  for (const char* home : {"item/sub/deep", "item", "home"}) {
    const ScopedEnvironment environment("HOME", path(home));
    EXPECT_EQ(codeOfBothWays(folder("item")), EBUSY) << home;
  }
  EXPECT_TRUE(isWhole());
  const ScopedEnvironment home("HOME", path("other"));
  const ScopedEnvironment data("XDG_DATA_HOME", path("item/sub"));
  EXPECT_EQ(removalCode(folder("item")), EBUSY) << "the program's own data";
  EXPECT_EQ(removalCode(folder("sub")), 0) << "a link to it takes nothing along";
  EXPECT_EQ(removalCode(folder("item/sub/deep")), 0) << "what lies inside may go";
  for (const std::string& bin : {std::string(".Trash"), ".Trash-" + std::to_string(geteuid())}) {
    makeTree(folder(""), bin + "/\n" + "drive/\n  " + bin + "/");
    EXPECT_EQ(codeOfBothWays(folder("drive")), EBUSY) << "it holds a Bin";
    EXPECT_EQ(codeOfBothWays(folder(bin)), EBUSY);
    erase(folder("drive"));
  }
}

TEST_F(Removal, AMountInsideAnItemKeepsItWholeAndWithoutADate) {
  makeTree(home(""), "elsewhere/\n  precious");
  makeTree(folder(""), "mounted");
  const BindMount mount(home("elsewhere"), folder("item/sub/deep"));
  const BindMount file(home("elsewhere/precious"), folder("mounted"));
  if (!mount.isMounted()) GTEST_SKIP() << mount.reason();
  for (const ListedEntry& entry : listDirectory(folder("")))
    EXPECT_EQ(entry.values.addedToDirectoryDate.has_value(), entry.url != folder("mounted"));
  EXPECT_EQ(codeOfBothWays(folder("mounted")), EXDEV);
  EXPECT_EQ(codeOfBothWays(folder("item")), EXDEV);
  EXPECT_EQ(codeOfBothWays(folder("item/sub/deep")), EXDEV);
  EXPECT_TRUE(exists(folder("item/file")));
  EXPECT_TRUE(exists(home("elsewhere/precious")));

  TreeRecorder recorder;
  open()->look("item", Disposal::bin, recorder);
  EXPECT_EQ(recorder.names, "item file sub ");
  EXPECT_EQ(recorder.failures, std::vector{EXDEV});
  const ResourceValues values = readResourceValues(folder("item/sub/deep"));
  EXPECT_EQ(values.isDirectory, true);
  EXPECT_EQ(values.addedToDirectoryDate, std::nullopt);
  EXPECT_EQ(values.contentModificationDate, std::nullopt);

  setMode(folder("item/sub"), 0);
  EXPECT_EQ(codeOfBothWays(folder("item")), EXDEV) << "in a part that can't be read";
  setMode(folder("item/sub"), 0700);
}

TEST_F(Removal, ASubvolumeInsideAnItemKeepsItWholeAndWithoutADate) {
  const TestFileSystem volume(TestFileSystem::Type::btrfs);
  if (!volume.isMounted()) GTEST_SKIP() << volume.reason();
  makeTree(volume.url(), "folder/\n  item/\n    file\n  plain/\n    file");
  runCommand("btrfs subvolume create '" + volume.url("folder/item/sub").path() + "'");
  writeFile(volume.url("folder/item/sub/precious"), "x");

  EXPECT_EQ(codeOfBothWays(volume.url("folder/item")), EXDEV);
  EXPECT_EQ(codeOfBothWays(volume.url("folder/item/sub")), EXDEV);
  EXPECT_EQ(codeOf([&] { trashItem(volume.url("folder/item/sub/precious")); }), EXDEV)
      << "it has no Bin of its own";
  EXPECT_TRUE(exists(volume.url("folder/item/sub/precious")));
  EXPECT_TRUE(exists(volume.url("folder/item/file")));
  EXPECT_EQ(namesIn(volume.url("")), std::set<std::string>{"folder"});
  EXPECT_EQ(readResourceValues(volume.url("folder/item/sub")).addedToDirectoryDate, std::nullopt);
  EXPECT_EQ(removalCode(volume.url("folder/plain")), 0);
}

TEST(Dates, ARenameIntoAFolderCountsAsComing) {
  for (const auto type : {TestFileSystem::Type::ext4, TestFileSystem::Type::xfs,
                          TestFileSystem::Type::btrfs, TestFileSystem::Type::tmpfs}) {
    SCOPED_TRACE(nameOf(type));
    const TestFileSystem volume(type);
    if (!volume.isMounted()) GTEST_SKIP() << volume.reason();
    makeTree(volume.url(), "a/\n  file\nb/");
    FileURL from = volume.url("a/file");
    FileURL to = volume.url("b/file");
    setModificationTime(from, 1000);
    const Date before = *readResourceValues(from).addedToDirectoryDate;
    Date after = before;
    // The kernel's clock for files moves in steps of a few milliseconds.
    for (int i = 0; i < 1000 && after == before; ++i, std::swap(from, to)) {
      ASSERT_EQ(rename(from.path().c_str(), to.path().c_str()), 0);
      const ResourceValues values = readResourceValues(to);
      after = *values.addedToDirectoryDate;
      EXPECT_EQ(values.contentModificationDate, Date{1000});
    }
    EXPECT_GT(after, before);
  }
}

}  // namespace
}  // namespace tidemar::testing
