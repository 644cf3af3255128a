#include <sys/file.h>
#include <sys/xattr.h>

#include "Platform/Files/Changes/LeftCopy.h"
#include "Platform/FolderAndBin.h"

namespace tidemar::testing {
namespace {

using PutBackByCopy = FolderAndBin;

class PutBackByCopyOn : public PutBackByCopy,
                        public ::testing::WithParamInterface<TestFileSystem::Type> {};

INSTANTIATE_TEST_SUITE_P(Platform, PutBackByCopyOn,
                         ::testing::Values(TestFileSystem::Type::ext4, TestFileSystem::Type::xfs,
                                           TestFileSystem::Type::btrfs,
                                           TestFileSystem::Type::tmpfs),
                         [](const auto& row) { return nameOf(row.param); });

TEST_P(PutBackByCopyOn, KeepsAllOfAnItemThereAndBackAgain) {
  if (!mountDrive(GetParam())) GTEST_SKIP() << _drive->reason();
  const FileURL place = layItem(R"(
    item/
      inner/
        file 5
        pipe |
        "-rf \n\xff\\ '" 3
        link -> ../inner
      locked/
        kept 2
      dangling -> nowhere
      sparse 1
      closed 3
      empty/)");
  const auto path = [&](const char* relative) { return place.path() + "/" + relative; };
  std::filesystem::resize_file(path("sparse"), 4 << 20);
  std::filesystem::create_hard_link(path("inner/file"), path("twin"));
  ASSERT_EQ(chown(path("twin").c_str(), 1234, 1235), 0);
  ASSERT_EQ(setxattr(path("twin").c_str(), "user.xdg.tags", "a,b\0c", 5, 0), 0);
  ASSERT_EQ(setxattr(place.path().c_str(), "user.odd \xFF", "", 0, 0), 0);
  setMode(FileURL(path("twin")), 06755);
  setMode(FileURL(path("closed")), 0);
  setMode(FileURL(path("locked")), 0500);
  setModificationTime(FileURL(path("inner/file")), 1e9 + 0.25);
  setModificationTime(FileURL(path("dangling")), 1.1e9);
  setModificationTime(FileURL(path("inner")), 1.2e9);
  setModificationTime(place, 1.3e9);
  const std::string before = imageOf(place);

  ASSERT_EQ(putBack(place), 0);
  EXPECT_EQ(imageOf(folder("item")), before);
  EXPECT_EQ(namesIn(folder("")), std::set<std::string>{"item"});
  EXPECT_TRUE(namesIn(bin("files")).empty() && namesIn(bin("info")).empty());

  const FileURL there = lay(drive(".Trash-" + user), "item", home("folder/item").path());
  erase(there);
  move(folder("item"), there);
  _folder = home("folder");
  ASSERT_EQ(putBack(there), 0);
  EXPECT_EQ(imageOf(folder("item")), before);
  EXPECT_FALSE(exists(there));
  struct stat sparse {};
  ASSERT_EQ(stat(folder("item/sparse").path().c_str(), &sparse), 0);
  EXPECT_LT(sparse.st_blocks, 64);

  _folder = drive("folder");
  for (const char* drawing : {"item 70000", "item -> nowhere", "item |", "item/"}) {
    SCOPED_TRACE(drawing);
    setModificationTime(layItem(drawing), 1e9);
    const std::string single = imageOf(place);
    ASSERT_EQ(putBack(place), 0);
    EXPECT_EQ(imageOf(folder("item")), single);
    erase(folder("item"));
  }
}

TEST_F(PutBackByCopy, RefusesWhatCouldNotBeDeletedAfterwards) {
  if (!mountDrive(TestFileSystem::Type::tmpfs)) GTEST_SKIP() << _drive->reason();
  const FileURL place = layItem("item/\n  locked/\n    file 3");
  for (const FileURL& way : {folder(""), drive("").deletingLastPathComponent()})
    setMode(way, 0777);
  for (const bool isLocked : {true, false}) {
    setMode(bin("files/item/locked"), isLocked ? 0500 : 0700);
    asOrdinaryUser(home(""), [&] { EXPECT_EQ(putBack(place), isLocked ? EACCES : 0); });
    EXPECT_EQ(readFile((isLocked ? place : folder("item")).appendingPathComponent("locked/file")),
              "xxx");
    EXPECT_EQ(namesIn(folder("")).empty(), isLocked);
  }
}

/// What others do between two steps of a put-back, and what the system refuses.
TEST_F(PutBackByCopy, TakesNothingOutOfTheBinThatIsNotWholeInTheFolder) {
  if (!mountDrive(TestFileSystem::Type::tmpfs, "size=1m")) GTEST_SKIP() << _drive->reason();
  const FileURL place = bin("files/item");
  const FileURL file = bin("files/item/inner/file");
  const FileURL folderInBin = drive(".Trash-" + user + "/files/folder");
  enterOwnMountNamespace();

  // A step is told by the system call that begins it and the number of that.
  const std::pair<long, int> begin = {SYS_renameat2, 1};
  const std::pair<long, int> syncing = {SYS_syncfs, 1};
  const std::pair<long, int> placing = {SYS_renameat2, 2};
  const std::pair<long, int> placed = {SYS_fsync, 1};
  const std::pair<long, int> taken = {SYS_renameat2, 4};
  enum class Folder { empty, other, hasCopy };
  const std::string write = "writes";
  const std::string dated = "; touch -d @1000000000 $C/inner/file";
  const std::string binFolder =
      "mkdir -p $D/.Trash-" + user + "/files; mv $F $D/.Trash-" + user + "/files";
  const struct {
    int code;
    std::pair<long, int> step;
    /// Of the shell: $O is the original, $C the copy, $F the folder, $D its drive.
    std::string command;
    Folder then = Folder::empty;
  } rows[] = {
      {EIO, begin, "truncate -s 2M $O/inner/file; fallocate -l 2M $O/inner/file"},  // No room.
      {EXDEV, begin, "mount --bind $D $O/inner"},
      {ETXTBSY, begin, write},
      {ESTALE, begin, "rm -r $O; mkdir -p $O/inner; touch $O/inner/file"},
      {EEXIST, begin, "touch $F/item", Folder::other},
      {EEXIST, placing, "touch $F/item", Folder::other},
      {ESTALE, syncing, "echo later > $O/inner/file"},
      {ESTALE, syncing, "echo later > $O/inner/file; touch -d @1000000000 $O/inner/file"},
      {ESTALE, syncing, "touch $O/more"},
      {ESTALE, syncing, "rm $O/inner/file"},
      {ESTALE, syncing, "rm -r $O; mkdir $O"},
      {EIO, syncing, "printf '\\0\\0\\0\\0\\0' > $C/inner/file" + dated},
      {EIO, syncing, "truncate -s 0 $C/inner/file; truncate -s 5 $C/inner/file" + dated},
      {EIO, syncing, "truncate -s 4 $C/inner/file" + dated},
      {EIO, syncing, "printf x >> $C/inner/file" + dated},
      {EIO, syncing, "printf x > $C/none"},
      {EIO, syncing, "touch -d @1000000000 $C/inner"},
      {EIO, syncing, "chmod 711 $C/inner"},
      {EIO, syncing, "rm $C/pipe; touch $C/pipe"},
      {EIO, syncing, "ln -sfn nowherf $C/link"},
      {EIO, syncing, "rm $C/pipe"},
      {EIO, syncing, "touch $C/inner/more"},
      {ESTALE, placing, "rm -r $C; touch $C", Folder::other},
      {ENOENT, syncing, binFolder},
      {ENOENT, placing, binFolder, Folder::hasCopy},
      {ESTALE, placed, "echo later > $O/inner/file", Folder::hasCopy},
      {ETXTBSY, placed, write, Folder::hasCopy},
      {0, taken, "echo later > $O", Folder::hasCopy},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.command + " before " + std::to_string(row.step.first));
    layItem("item/\n  inner/\n    file 5\n  none\n  pipe |\n  link -> nowhere");
    std::filesystem::create_directory(folder("").path());
    setModificationTime(file, 1e9);
    FileDescriptor writer;
    std::string left;
    int code = 0;
    const auto act = [&](int call) {
      if (call != row.step.second) return;
      if (row.command == write) {
        writer = FileDescriptor(::open(file.path().c_str(), O_WRONLY | O_CLOEXEC));
      } else {
        runCommand("O='" + place.path() + "'; D='" + drive("").path() +
                   "'; F=$D/folder; C=$(echo $F/.tidemar-copy-*)/0/item; " + row.command);
      }
      left = contentOf(file);
    };
    withActionBefore(row.step.first, act, [&] { code = putBack(place); });
    EXPECT_EQ(code, row.code);
    EXPECT_EQ(contentOf(file), left);
    EXPECT_TRUE(exists(bin("info/item.trashinfo")));
    const FileURL present = exists(folder("")) ? folder("") : folderInBin;
    EXPECT_EQ(namesIn(present).size(), row.then == Folder::empty ? 0U : 1U);
    if (row.then == Folder::hasCopy) {
      EXPECT_EQ(readFile(FileURL(present.path() + "/item/inner/file")), "xxxxx");
    }
    runCommand("umount '" + place.path() + "/inner' 2>&-; true");
    erase(place);
    erase(present);
  }
  layItem();
  std::filesystem::create_directory(folder("").path());
  withActionBefore(
      SYS_syncfs, [&](int) { writeFile(place, "later"); },
      [&] { EXPECT_EQ(putBack(place), ESTALE); });
  EXPECT_EQ(readFile(place), "later");

  const std::tuple<long, int, int> failures[] = {{SYS_clone, EAGAIN, EAGAIN},
                                                 {SYS_execve, EACCES, ENOENT},
                                                 {SYS_syncfs, EIO, EIO},
                                                 {SYS_fsync, EIO, EIO}};
  for (const auto& [call, injected, code] : failures) {
    layItem();
    withFailingSystemCall(call, injected, [&] { EXPECT_EQ(putBack(place), code); });
    EXPECT_EQ(readFile(place), "xxxxx");
    EXPECT_EQ(namesIn(folder("")).size(), call == SYS_fsync ? 1U : 0U);
  }
}

const std::string left = ".tidemar-copy-0123456789abcdef";

/// A folder with a directory in it that a dead put-back has left, and what it must not touch.
class LeftCopy : public FolderAndBin {
 protected:
  void layCopy() {
    makeTree(home(""), "kept/\n  precious");
    makeTree(folder(""), R"(
      copy/
        tidemar
        0/
          item/
            a/
              b/
                file 3
            link -> ../../../../kept
            pipe |)");
    setMode(folder("copy"), 0700);
    move(folder("copy"), folder(left));
  }

  void sweep(const std::string& entry) const {
    const FileDescriptor opened(::open(folder("").path().c_str(), O_RDONLY | O_CLOEXEC));
    sweepLeftCopy(opened.get(), entry);
  }
};

TEST_F(LeftCopy, IsDeletedIfItIsSurelyOne) {
  if (geteuid() != 0) GTEST_SKIP() << "needs to be root";
  // A command of the shell in the folder, where $L is the directory, whether it goes, by this name.
  const std::tuple<std::string, bool, std::string> rows[] = {
      {"true", true, left},
      {"rm -r $L/0", true, left},
      {"rm -r $L/0 $L/tidemar", true, left},
      {"rm $L/tidemar", false, left},
      {"chmod 750 $L", false, left},
      {"chown 77:77 $L", false, left},
      {"touch $L/0/more", false, left},
      {"touch $L/more", false, left},
      {"mkdir $L/1; touch $L/1/more", false, left},
      {"mv $L copy; ln -s copy $L", false, left},
      {"mv $L copy", false, "copy"},
      {"mv $L ${L}0", false, left + "0"},
      {"mv $L .tidemar-taken-0123456789abcdef", false, ".tidemar-taken-0123456789abcdef"},
  };
  for (const auto& [command, goes, swept] : rows) {
    SCOPED_TRACE(command);
    layCopy();
    runIn(folder(""), "L=" + left + "; " + command);
    const std::string all = "find . ! -name tidemar | sort";  // The mark alone is nobody's loss.
    const std::string before = runIn(folder(""), all);
    sweep(swept);
    EXPECT_EQ(runIn(folder(""), all), goes ? ".\n" : before);
    EXPECT_TRUE(exists(home("kept/precious")));
    runIn(home(""), "rm -r kept folder; mkdir folder");
  }
  layCopy();
  {
    const BindMount mount(home("kept"), folder(left + "/0/item/a/b"));
    ASSERT_TRUE(mount.isMounted()) << mount.reason();
    sweep(left);
  }
  EXPECT_TRUE(exists(folder(left + "/0/item/a/b/file")) && exists(home("kept/precious")));
  const FileDescriptor lock(::open(folder(left).path().c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(flock(lock.get(), LOCK_EX), 0);
  sweep(left);
  EXPECT_TRUE(exists(folder(left + "/0/item/a/b/file"))) << "in use";
}

TEST_F(LeftCopy, GoesWhateverItsModes) {
  layCopy();
  for (const char* path : {"/0/item/a/b/file", "/0/item/a/b", "/0/item/a", "/0/item"})
    setMode(folder(left + path), 0);
  asOrdinaryUser(home(""), [&] { sweep(left); });
  EXPECT_TRUE(namesIn(folder("")).empty());
}

TEST_F(LeftCopy, GoesHoweverDeepItIs) {
  layCopy();
  std::string below = "d";
  for (int depth = 1; depth < 300; ++depth)
    below += "/d";
  std::filesystem::create_directories(folder(left + "/0/item/" + below).path());
  withSmallThread([&] { sweep(left); });
  EXPECT_TRUE(namesIn(folder("")).empty());
}

}  // namespace
}  // namespace tidemar::testing
