#include <sys/xattr.h>

#include "Platform/Files/Descriptors/FileDescriptor.h"
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
  FileDescriptor writer;
  std::unique_ptr<BindMount> mount;

  using Action = std::function<void()>;
  const auto writing = [](const FileURL& url, const std::string& content) -> Action {
    return [=] { writeFile(url, content); };
  };
  const auto copyOf = [&](const std::string& relative) {
    for (const std::string& name : namesIn(folder(""))) {
      if (name.starts_with(".tidemar-copy-")) return folder(name + "/0/item" + relative);
    }
    return FileURL();
  };
  const auto inCopy = [&](const char* relative, std::function<void(const FileURL&)> change) {
    return [=] { change(copyOf(relative)); };
  };
  const auto inFileOfCopy = [&](const std::string& content, std::uintmax_t size) {
    return inCopy("/inner/file", [=](const FileURL& url) {
      writeFile(url, content);
      std::filesystem::resize_file(url.path(), size);
      setModificationTime(url, 1e9);
    });
  };
  const Action binFolder = [&] {
    std::filesystem::create_directories(folderInBin.deletingLastPathComponent().path());
    move(folder(""), folderInBin);
  };
  const Action openForWriting = [&] {
    writer = FileDescriptor(::open(file.path().c_str(), O_WRONLY | O_CLOEXEC));
  };

  // A step is told by the system call that begins it and the number of that.
  const std::pair<long, int> begin = {SYS_renameat2, 1};
  const std::pair<long, int> syncing = {SYS_syncfs, 1};
  const std::pair<long, int> placing = {SYS_renameat2, 2};
  const std::pair<long, int> placed = {SYS_fsync, 1};
  const std::pair<long, int> taken = {SYS_renameat2, 4};
  enum class Folder { empty, other, hasCopy };
  const struct {
    const char* title;
    int code;
    std::pair<long, int> step;
    Action happens;
    Folder then = Folder::empty;
  } rows[] = {
      {"no room", EIO, begin, writing(file, std::string(2 << 20, 'x'))},
      {"another mount in it", EXDEV, begin,
       [&] { mount = std::make_unique<BindMount>(drive(""), bin("files/item/inner")); }},
      {"a writer", ETXTBSY, begin, openForWriting},
      {"another item in its place", ESTALE, begin,
       [&] { erase(place), makeTree(bin("files"), "item/\n  inner/\n    file"); }},
      {"the name is taken", EEXIST, begin, writing(folder("item"), "new"), Folder::other},
      {"the name is taken late", EEXIST, placing, writing(folder("item"), "new"), Folder::other},
      {"the original is written to", ESTALE, syncing, writing(file, "later")},
      {"the original is written to and dated back", ESTALE, syncing,
       [&] { writeFile(file, "later"), setModificationTime(file, 1e9); }},
      {"the original gets an entry", ESTALE, syncing, writing(bin("files/item/more"), "")},
      {"the original loses an entry", ESTALE, syncing, [&] { erase(file); }},
      {"the original is replaced", ESTALE, syncing,
       [&] { erase(place), makeTree(bin("files"), "item/"); }},
      {"the copy has zeros", EIO, syncing, inFileOfCopy(std::string(5, '\0'), 5)},
      {"the copy has a hole", EIO, syncing, inFileOfCopy("", 5)},
      {"the copy is short", EIO, syncing, inFileOfCopy("xxxx", 4)},
      {"the copy is long", EIO, syncing, inFileOfCopy("xxxxxx", 6)},
      {"the copy of nothing has content", EIO, syncing,
       inCopy("/none", [](auto& url) { writeFile(url, "x"); })},
      {"the copy has another date", EIO, syncing,
       inCopy("/inner", [](auto& url) { setModificationTime(url, 1e9); })},
      {"the copy has another mode", EIO, syncing,
       inCopy("/inner", [](auto& url) { chmod(url.path().c_str(), 0711); })},
      {"the copy has a file for a FIFO", EIO, syncing,
       inCopy("/pipe", [&](auto& url) { erase(url), writeFile(url, ""); })},
      {"the copy has a link elsewhere", EIO, syncing,
       inCopy("/link", [&](auto& url) { erase(url), makeTree(copyOf(""), "link -> nowherf"); })},
      {"the copy lacks an entry", EIO, syncing, inCopy("/pipe", erase)},
      {"the copy has one more", EIO, syncing,
       inCopy("/inner/more", [](auto& url) { writeFile(url, ""); })},
      {"the copy is replaced", ESTALE, placing,
       inCopy("", [&](auto& url) { erase(url), writeFile(url, ""); }), Folder::other},
      {"the folder goes to the Bin", ENOENT, syncing, binFolder},
      {"the folder goes to the Bin late", ENOENT, placing, binFolder, Folder::hasCopy},
      {"written to late", ESTALE, placed, writing(file, "later"), Folder::hasCopy},
      {"a writer comes late", ETXTBSY, placed, openForWriting, Folder::hasCopy},
      {"another is saved in its place", 0, taken, writing(place, "later"), Folder::hasCopy},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    layItem("item/\n  inner/\n    file 5\n  none\n  pipe |\n  link -> nowhere");
    std::filesystem::create_directory(folder("").path());
    setModificationTime(file, 1e9);
    std::string left;
    int code = 0;
    const auto act = [&](int call) {
      if (call != row.step.second) return;
      row.happens();
      left = exists(file) ? readFile(file) : "nothing";
    };
    withActionBefore(row.step.first, act, [&] { code = putBack(place); });
    EXPECT_EQ(code, row.code);
    EXPECT_EQ(exists(file) ? readFile(file) : "nothing", left);
    EXPECT_TRUE(exists(bin("info/item.trashinfo")));
    const FileURL present = exists(folder("")) ? folder("") : folderInBin;
    EXPECT_EQ(namesIn(present).size(), row.then == Folder::empty ? 0U : 1U);
    if (row.then == Folder::hasCopy) {
      EXPECT_EQ(readFile(FileURL(present.path() + "/item/inner/file")), "xxxxx");
    }
    writer.close();
    mount.reset();
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

}  // namespace
}  // namespace tidemar::testing
