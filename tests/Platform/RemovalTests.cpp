#include <cerrno>
#include <functional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/DiskFileManager.h"
#include "Platform/PlatformError.h"
#include "support/FailingSystemCall.h"
#include "support/FolderActions.h"
#include "support/ScopedEnvironment.h"
#include "support/SmallThread.h"
#include "support/TemporaryTree.h"
#include "support/TestFileSystems.h"

namespace tidemar {
namespace {

using namespace testing;

/// The code of the error that the removal ends in, 0 for none.
int removalCode(const FileURL& url) {
  try {
    removeItem(url);
    return 0;
  } catch (const PlatformError& error) {
    return error.code();
  }
}

constexpr const char* item = R"(
    item/
      file
      sub/
        deep/
          leaf)";

/// Whether nothing of the drawn item has gone.
bool isWhole(const TemporaryDirectory& directory) {
  return exists(directory.url("item/file")) && exists(directory.url("item/sub/deep/leaf"));
}

TEST(Removal, TakesWhatItemsAreMadeOfAndNothingThatTheyPointTo) {
  TemporaryDirectory directory;
  makeTree(directory.url(), R"(
    kept/
      precious
    plain
    odd/
      "a \n\xff"
      .hidden
      pipe |
      link -> ../kept
      empty/
    link -> kept)");
  for (const char* name : {"plain", "odd", "link"})
    EXPECT_EQ(removalCode(directory.url(name)), 0) << name;
  for (const char* name : {"plain", "odd", "link"})
    EXPECT_FALSE(exists(directory.url(name))) << name;
  EXPECT_TRUE(exists(directory.url("kept/precious")));
}

TEST(Removal, RefusesWhatIsNoEntry) {
  TemporaryDirectory directory;
  makeTree(directory.url(), item);
  using namespace std::string_literals;
  for (const std::string& path : {"item/.."s, "item/."s, "missing"s, "item\0/x"s}) {
    EXPECT_NE(removalCode(FileURL(directory.path(path))), 0) << path;
  }
  EXPECT_NE(removalCode(FileURL("/")), 0);
  EXPECT_NE(removalCode(FileURL()), 0);
  EXPECT_TRUE(isWhole(directory));
}

TEST(Removal, WhatCouldNotGoWholeIsNotTouched) {
  struct Row {
    const char* name;
    std::string obstacle;
    mode_t mode;
  };
  for (const Row& row : {Row{"a directory inside it can't be read", "item/sub/deep", 0},
                         Row{"a directory inside it can't be written", "item/sub/deep", 0500},
                         Row{"the folder that it lies in can't be written", "", 0500}}) {
    TemporaryDirectory directory;
    makeTree(directory.url(), item);
    asOrdinaryUser(directory.url(), [&] {
      chmod(directory.path(row.obstacle).c_str(), row.mode);
      EXPECT_EQ(removalCode(directory.url("item")), EACCES) << row.name;
      chmod(directory.path(row.obstacle).c_str(), 0700);
    });
    EXPECT_TRUE(isWhole(directory)) << row.name;
  }
}

TEST(Removal, AnItemThatCannotBeWrittenItselfKeepsWhatLiesDeeper) {
  TemporaryDirectory directory;
  makeTree(directory.url(), "item/\n  sub/\n    leaf");
  asOrdinaryUser(directory.url(), [&] {
    chmod(directory.path("item").c_str(), 0500);
    EXPECT_EQ(removalCode(directory.url("item")), EACCES);
    chmod(directory.path("item").c_str(), 0700);
  });
  EXPECT_TRUE(exists(directory.url("item/sub/leaf")));
}

TEST(Removal, AFileOfAnotherUserInAStickyDirectoryKeepsTheWholeItem) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  constexpr uid_t nobody = 65534;
  TemporaryDirectory directory;
  makeTree(directory.url(), "item/\n  a/\n    leaf\n  sub/\n    leaf\n  z/\n    leaf");
  for (const char* name : {"", "item", "item/a", "item/a/leaf", "item/z", "item/z/leaf"})
    EXPECT_EQ(chown(directory.path(name).c_str(), nobody, nobody), 0) << name;
  EXPECT_EQ(chmod(directory.path("item/sub").c_str(), 01777), 0);
  asOrdinaryUser(directory.url("item/a"), [&] {
    EXPECT_EQ(removalCode(directory.url("item")), EPERM);
    makeTree(directory.url("item/a"), "ok/\n  empty/");
    chmod(directory.path("item/a/ok/empty").c_str(), 0500);
    EXPECT_EQ(removalCode(directory.url("item/a/ok")), 0) << "nothing lies in what is locked";
  });
  for (const char* name : {"item/a/leaf", "item/sub/leaf", "item/z/leaf"})
    EXPECT_TRUE(exists(directory.url(name))) << name;
}

TEST(Removal, AnEntryThatIsListedAndIsNotThereEndsInAFailure) {
  TemporaryDirectory directory;
  makeTree(directory.url(), item);
  withFailingSystemCall(SYS_unlinkat, ENOENT,
                        [&] { EXPECT_EQ(removalCode(directory.url("item")), ENOENT); });
  EXPECT_TRUE(isWhole(directory));
}

TEST(Removal, AnImmutablePartKeepsTheWholeItem) {
  TemporaryDirectory directory;
  makeTree(directory.url(), item);
  const FileDescriptor file(open(directory.path("item/sub/deep/leaf").c_str(), O_RDONLY));
  int flags = FS_IMMUTABLE_FL;
  if (ioctl(file.get(), FS_IOC_SETFLAGS, &flags) != 0) GTEST_SKIP() << "no immutable files here";
  EXPECT_EQ(removalCode(directory.url("item")), EPERM);
  EXPECT_TRUE(isWhole(directory));
  flags = 0;
  ioctl(file.get(), FS_IOC_SETFLAGS, &flags);
}

/// What leaves an item: the way to delete it, and the one to the Bin.
struct Way {
  const char* name;
  std::function<void(const FileURL&)> take;
};

const std::vector<Way>& ways() {
  static const std::vector<Way> all = {{"deleting", removeItem}, {"trashing", trashItem}};
  return all;
}

int codeOf(const Way& way, const FileURL& url) {
  try {
    way.take(url);
    return 0;
  } catch (const PlatformError& error) {
    return error.code();
  }
}

TEST(Boundaries, AnItemDoesNotTakeAFolderThatIsNeverClearedWithIt) {
  TemporaryDirectory directory;
  makeTree(directory.url(), item);
  makeTree(directory.url(), "home -> item/sub/deep\nsub -> item\nother/");
  for (const char* home : {"item/sub/deep", "item", "home"}) {
    const ScopedEnvironment environment("HOME", directory.path(home));
    for (const Way& way : ways())
      EXPECT_EQ(codeOf(way, directory.url("item")), EBUSY) << way.name << " " << home;
  }
  EXPECT_TRUE(isWhole(directory));
  const ScopedEnvironment home("HOME", directory.path("other"));
  const ScopedEnvironment data("XDG_DATA_HOME", directory.path("item/sub"));
  EXPECT_EQ(removalCode(directory.url("item")), EBUSY) << "the program's own data";
  EXPECT_EQ(removalCode(directory.url("sub")), 0) << "a link to it takes nothing along";
  EXPECT_EQ(removalCode(directory.url("item/sub/deep")), 0) << "what lies inside may go";
}

TEST(Boundaries, AMountInsideAnItemKeepsItWholeAndWithoutADate) {
  TemporaryDirectory directory;
  TemporaryDirectory elsewhere;
  makeTree(directory.url(), item);
  makeTree(elsewhere.url(), "precious");
  const BindMount mount(elsewhere.url(), directory.url("item/sub/deep"));
  if (!mount.isMounted()) GTEST_SKIP() << mount.reason();

  for (const Way& way : ways())
    EXPECT_EQ(codeOf(way, directory.url("item")), EXDEV) << way.name;
  for (const Way& way : ways())
    EXPECT_EQ(codeOf(way, directory.url("item/sub/deep")), EXDEV) << way.name;
  EXPECT_TRUE(exists(directory.url("item/file")));
  EXPECT_TRUE(exists(elsewhere.url("precious")));

  struct Visitor : TreeVisitor {
    void visit(const TreeElement& element) override { names += std::string(element.name) + " "; }
    void failed(int code) override { failures.push_back(code); }
    void restart() override {}
    void knownFolder(std::span<const std::string>) override {}
    std::string names;
    std::vector<int> failures;
  } visitor;
  DiskFileManager().openFolder(directory.url())->look("item", Disposal::bin, visitor);
  EXPECT_EQ(visitor.names, "item file sub ");
  EXPECT_EQ(visitor.failures, std::vector{EXDEV});

  const ResourceValues values = readResourceValues(directory.url("item/sub/deep"));
  EXPECT_EQ(values.addedToDirectoryDate, std::nullopt);
  EXPECT_EQ(values.contentModificationDate, std::nullopt);
}

TEST(Boundaries, AMountedFileIsNoOrdinaryFile) {
  TemporaryDirectory directory;
  makeTree(directory.url(), "item\nother 3");
  const BindMount mount(directory.url("other"), directory.url("item"));
  if (!mount.isMounted()) GTEST_SKIP() << mount.reason();
  for (const ListedEntry& entry : listDirectory(directory.url())) {
    const bool isMountPoint = entry.url == directory.url("item");
    EXPECT_EQ(entry.values.addedToDirectoryDate.has_value(), !isMountPoint) << entry.url.path();
  }
  for (const Way& way : ways())
    EXPECT_EQ(codeOf(way, directory.url("item")), EXDEV) << way.name;
}

TEST(Boundaries, AMountInAPartThatCannotBeReadIsFoundToo) {
  TemporaryDirectory directory;
  TemporaryDirectory elsewhere;
  makeTree(directory.url(), item);
  const BindMount mount(elsewhere.url(), directory.url("item/sub/deep"));
  if (!mount.isMounted()) GTEST_SKIP() << mount.reason();
  chmod(directory.path("item/sub").c_str(), 0);
  for (const Way& way : ways())
    EXPECT_EQ(codeOf(way, directory.url("item")), EXDEV) << way.name;
  chmod(directory.path("item/sub").c_str(), 0700);
}

TEST(Boundaries, ASubvolumeInsideAnItemKeepsItWholeAndWithoutADate) {
  const TestFileSystem volume(TestFileSystem::Type::btrfs);
  if (!volume.isMounted()) GTEST_SKIP() << volume.reason();
  makeTree(volume.url(), "folder/\n  item/\n    file\n  plain/\n    file");
  runCommand("btrfs subvolume create '" + volume.url("folder/item/sub").path() + "'");
  writeFile(volume.url("folder/item/sub/precious"), "x");

  for (const Way& way : ways())
    EXPECT_EQ(codeOf(way, volume.url("folder/item")), EXDEV) << way.name;
  for (const Way& way : ways())
    EXPECT_EQ(codeOf(way, volume.url("folder/item/sub")), EXDEV) << way.name;
  EXPECT_TRUE(exists(volume.url("folder/item/sub/precious")));
  EXPECT_TRUE(exists(volume.url("folder/item/file")));
  EXPECT_EQ(readResourceValues(volume.url("folder/item/sub")).addedToDirectoryDate, std::nullopt);
  EXPECT_EQ(removalCode(volume.url("folder/plain")), 0);
}

TEST(Dates, ARenameIntoAFolderCountsAsComing) {
  for (const auto type : {TestFileSystem::Type::ext4, TestFileSystem::Type::xfs,
                          TestFileSystem::Type::btrfs, TestFileSystem::Type::tmpfs}) {
    const TestFileSystem volume(type);
    if (!volume.isMounted()) GTEST_SKIP() << nameOf(type) << ": " << volume.reason();
    makeTree(volume.url(), "before/\n  file\nfolder/");
    setModificationTime(volume.url("before/file"), 1000);
    const Date before = *readResourceValues(volume.url("before/file")).addedToDirectoryDate;
    Date after = before;
    // The kernel's clock for files moves in steps of a few milliseconds.
    for (int i = 0; i < 1000 && after == before; ++i) {
      const bool isBack = exists(volume.url("folder/file"));
      const FileURL from = volume.url(isBack ? "folder/file" : "before/file");
      const FileURL to = volume.url(isBack ? "before/file" : "folder/file");
      ASSERT_EQ(rename(from.path().c_str(), to.path().c_str()), 0);
      const ResourceValues values = readResourceValues(to);
      after = *values.addedToDirectoryDate;
      EXPECT_EQ(values.contentModificationDate, Date{1000}) << nameOf(type);
    }
    EXPECT_GT(after, before) << nameOf(type);
  }
}

}  // namespace
}  // namespace tidemar
