#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/DiskFileManager.h"
#include "support/FailingSystemCall.h"
#include "support/FileExpectations.h"
#include "support/FolderActions.h"
#include "support/ScopedEnvironment.h"
#include "support/SmallThread.h"
#include "support/SystemCallHook.h"
#include "support/TemporaryTree.h"
#include "support/TestFileSystems.h"

namespace tidemar {
namespace {

using namespace testing;

std::string attributesOf(const FileURL& url) {
  std::array<char, 4096> names{}, value{};
  std::set<std::string> attributes;
  const ssize_t size = llistxattr(url.path().c_str(), names.data(), names.size());
  for (ssize_t i = 0; i < size; i += static_cast<ssize_t>(strlen(&names[i])) + 1) {
    const ssize_t length = lgetxattr(url.path().c_str(), &names[i], value.data(), value.size());
    attributes.insert(std::string(&names[i]) + "=" + std::string(value.data(), length));
  }
  std::string text;
  for (const std::string& attribute : attributes)
    text += attribute + " ";
  return text;
}

/// All that is to be kept of an entry.
std::string descriptionOf(const FileURL& url, std::map<ino_t, std::string>& links) {
  struct stat values {};
  EXPECT_EQ(lstat(url.path().c_str(), &values), 0) << url.path();
  std::ostringstream text;
  text << std::oct << values.st_mode << std::dec << ' ' << values.st_uid << ':' << values.st_gid
       << ' ' << values.st_mtim.tv_sec << '.' << values.st_mtim.tv_nsec << ' ' << attributesOf(url);
  if (S_ISLNK(values.st_mode)) text << std::filesystem::read_symlink(url.path());
  if (S_ISREG(values.st_mode)) {
    text << "as " << links.emplace(values.st_ino, url.lastPathComponent()).first->second << ' '
         << std::hash<std::string>()(readFile(url));
  }
  return text.str();
}

using Tree = std::map<std::string, std::string>;

/// Of an item and all that lies in it.
Tree treeAt(const FileURL& item) {
  std::map<ino_t, std::string> links;
  std::set<std::string> paths;
  if (std::filesystem::is_directory(std::filesystem::symlink_status(item.path()))) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(item.path()))
      paths.insert(entry.path().string().substr(item.path().size()));
  }
  Tree tree = {{"", exists(item) ? descriptionOf(item, links) : "nothing"}};
  for (const std::string& path : paths)
    tree[path] = descriptionOf(FileURL(item.path() + path), links);
  return tree;
}

class PutBackByCopy : public ::testing::Test {
 protected:
  FileURL trash(const std::string& relative) const {
    return FileURL(_home.path(".local/share/Trash/") + relative);
  }
  FileURL folder(const std::string& relative) const { return _drive->url("folder/" + relative); }

  /// Brings up the drive on which the folder lies.
  bool mount(TestFileSystem::Type type, const std::string& options = {}) {
    _drive = std::make_unique<TestFileSystem>(type, options);
    if (_drive->isMounted()) std::filesystem::create_directory(folder("").path());
    return _drive->isMounted();
  }

  /// Lays the drawn item into the home Trash, as one of the folder's.
  FileURL bin(const std::string& drawing) const {
    const FileURL place = layInTrash(trash(""), "item", folder("item").path());
    std::filesystem::remove_all(place.path());
    makeTree(trash("files"), drawing);
    return place;
  }

  int codeOfPutBack(const FileURL& place, const FileURL& folder, const char* name = "item") const {
    return codeOf([&] {
      const auto opened = DiskFileManager().openFolder(folder);
      const auto item = opened->binnedItem(place, name);
      ASSERT_NE(item, nullptr);
      item->putBack();
    });
  }
  int codeOfPutBack() const { return codeOfPutBack(trash("files/item"), folder("")); }

  /// Where a part of the item lies in the copy that is being made.
  FileURL copied(const std::string& relative) const {
    for (const std::string& name : namesIn(folder(""))) {
      if (name.starts_with(".tidemar-copy-")) return folder(name + "/0/item" + relative);
    }
    return {};
  }

  TemporaryDirectory _home;
  ScopedHome _environment{_home.url()};
  std::unique_ptr<TestFileSystem> _drive;
};

class PutBackByCopyOn : public PutBackByCopy,
                        public ::testing::WithParamInterface<TestFileSystem::Type> {};

INSTANTIATE_TEST_SUITE_P(Platform, PutBackByCopyOn,
                         ::testing::Values(TestFileSystem::Type::ext4, TestFileSystem::Type::xfs,
                                           TestFileSystem::Type::btrfs,
                                           TestFileSystem::Type::tmpfs),
                         [](const auto& row) { return nameOf(row.param); });

TEST_P(PutBackByCopyOn, KeepsAllOfAnItemThereAndBackAgain) {
  if (!mount(GetParam())) GTEST_SKIP() << _drive->reason();
  const FileURL place = bin(R"(
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
  ASSERT_EQ(truncate(path("sparse").c_str(), 4 << 20), 0);
  ASSERT_EQ(link(path("inner/file").c_str(), path("twin").c_str()), 0);
  ASSERT_EQ(chown(path("twin").c_str(), 1234, 1235), 0);
  ASSERT_EQ(chmod(path("twin").c_str(), 06755), 0);
  ASSERT_EQ(chmod(path("closed").c_str(), 0), 0);
  ASSERT_EQ(setxattr(path("twin").c_str(), "user.xdg.tags", "a,b\0c", 5, 0), 0);
  ASSERT_EQ(setxattr(place.path().c_str(), "user.odd \xFF", "", 0, 0), 0);
  setModificationTime(FileURL(path("inner/file")), 1e9 + 0.25);
  setModificationTime(FileURL(path("dangling")), 1.1e9);
  setModificationTime(FileURL(path("inner")), 1.2e9);
  setModificationTime(place, 1.3e9);
  ASSERT_EQ(chmod(path("locked").c_str(), 0500), 0);
  const Tree before = treeAt(place);

  ASSERT_EQ(codeOfPutBack(), 0);
  EXPECT_EQ(treeAt(folder("item")), before);
  EXPECT_EQ(namesIn(folder("")), std::set<std::string>{"item"});
  EXPECT_TRUE(namesIn(trash("files")).empty());
  EXPECT_TRUE(namesIn(trash("info")).empty());

  const FileURL binThere = _drive->url(".Trash-" + std::to_string(geteuid()));
  const FileURL there = layInTrash(binThere, "binned", _home.path("item"));
  std::filesystem::remove(there.path());
  std::filesystem::rename(folder("item").path(), there.path());
  ASSERT_EQ(codeOfPutBack(there, _home.url()), 0);
  EXPECT_EQ(treeAt(_home.url("item")), before);
  EXPECT_TRUE(namesIn(FileURL(binThere.path() + "/files")).empty());
  struct stat sparse {};
  ASSERT_EQ(stat(_home.path("item/sparse").c_str(), &sparse), 0);
  EXPECT_LT(sparse.st_blocks, 64);

  for (const char* drawing : {"item 70000", "item -> nowhere", "item |", "item/"}) {
    SCOPED_TRACE(drawing);
    bin(drawing);
    setModificationTime(place, 1e9);
    const Tree single = treeAt(place);
    ASSERT_EQ(codeOfPutBack(), 0);
    EXPECT_EQ(treeAt(folder("item")), single);
    std::filesystem::remove_all(folder("item").path());
  }
}

TEST_F(PutBackByCopy, RefusesWhatCouldNotBeDeletedAfterwards) {
  if (!mount(TestFileSystem::Type::tmpfs)) GTEST_SKIP() << _drive->reason();
  const FileURL place = bin("item/\n  locked/\n    file 3");
  for (const FileURL& way : {folder(""), _drive->url().deletingLastPathComponent()})
    ASSERT_EQ(chmod(way.path().c_str(), 0777), 0);
  ASSERT_EQ(chmod(trash("files/item/locked").path().c_str(), 0500), 0);
  asOrdinaryUser(_home.url(), [&] { EXPECT_EQ(codeOfPutBack(), EACCES); });
  EXPECT_EQ(readFile(trash("files/item/locked/file")), "xxx");
  EXPECT_TRUE(namesIn(folder("")).empty());
  ASSERT_EQ(chmod(trash("files/item/locked").path().c_str(), 0700), 0);
  asOrdinaryUser(_home.url(), [&] { EXPECT_EQ(codeOfPutBack(), 0); });
  EXPECT_EQ(readFile(folder("item/locked/file")), "xxx");
}

/// What others do between two steps of a put-back, and what the system refuses.
TEST_F(PutBackByCopy, TakesNothingOutOfTheBinThatIsNotWholeInTheFolder) {
  if (!mount(TestFileSystem::Type::tmpfs, "size=1m")) GTEST_SKIP() << _drive->reason();
  const FileURL place = trash("files/item");
  const FileURL file = trash("files/item/inner/file");
  const FileURL binOfDrive = _drive->url(".Trash-" + std::to_string(geteuid()) + "/files/folder");
  FileDescriptor writer;
  std::unique_ptr<BindMount> mountInside;

  using Action = std::function<void()>;
  const auto writing = [](const FileURL& url, const std::string& content) -> Action {
    return [=] { writeFile(url, content); };
  };
  const auto inCopy = [&](const char* relative, std::function<void(const FileURL&)> change) {
    return [this, relative, change] { change(copied(relative)); };
  };
  const auto erase = [](const FileURL& url) { std::filesystem::remove_all(url.path()); };
  const Action binFolder = [&] {
    std::filesystem::create_directories(binOfDrive.deletingLastPathComponent().path());
    std::filesystem::rename(folder("").path(), binOfDrive.path());
  };
  const Action openForWriting = [&] {
    writer = FileDescriptor(open(file.path().c_str(), O_WRONLY | O_CLOEXEC));
  };

  // A step is told by the system call that begins it and the number of that.
  const std::pair<long, int> begin = {SYS_renameat2, 1};
  const std::pair<long, int> syncing = {SYS_syncfs, 1};
  const std::pair<long, int> placing = {SYS_renameat2, 2};
  const std::pair<long, int> placed = {SYS_fsync, 1};
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
       [&] {
         mountInside = std::make_unique<BindMount>(_drive->url(), trash("files/item/inner"));
       }},
      {"a writer", ETXTBSY, begin, openForWriting},
      {"the name is taken", EEXIST, begin, writing(folder("item"), "new"), Folder::other},
      {"the name is taken late", EEXIST, placing, writing(folder("item"), "new"), Folder::other},
      {"the original is written to", ESTALE, syncing, writing(file, "later")},
      {"the original is written to and dated back", ESTALE, syncing,
       [&] { writeFile(file, "later"), setModificationTime(file, 1e9); }},
      {"the original gets an entry", ESTALE, syncing, writing(trash("files/item/more"), "")},
      {"the original loses an entry", ESTALE, syncing, [&] { erase(file); }},
      {"the original is replaced", ESTALE, syncing,
       [&] { erase(place), makeTree(trash("files"), "item/"); }},
      {"the copy has zeros", EIO, syncing,
       inCopy("/inner/file", [](auto& url) { writeFile(url, std::string(5, '\0')); })},
      {"the copy has a hole", EIO, syncing,
       inCopy("/inner/file",
              [](auto& url) { writeFile(url, ""), std::filesystem::resize_file(url.path(), 5); })},
      {"the copy is short", EIO, syncing,
       inCopy("/inner/file", [](auto& url) { writeFile(url, "xxxx"); })},
      {"the copy has another date", EIO, syncing,
       inCopy("/inner", [](auto& url) { setModificationTime(url, 1e9); })},
      {"the copy has another mode", EIO, syncing,
       inCopy("/inner", [](auto& url) { chmod(url.path().c_str(), 0711); })},
      {"the copy has a file for a FIFO", EIO, syncing,
       inCopy("/pipe", [&](auto& url) { erase(url), writeFile(url, ""); })},
      {"the copy has a link elsewhere", EIO, syncing,
       inCopy("/link", [&](auto& url) { erase(url), makeTree(copied("/"), "link -> nowherf"); })},
      {"the copy lacks an entry", EIO, syncing, inCopy("/pipe", erase)},
      {"the copy has one more", EIO, syncing,
       inCopy("/inner/more", [](auto& url) { writeFile(url, ""); })},
      {"the copy is replaced", ESTALE, placing,
       inCopy("", [&](auto& url) { erase(url), writeFile(url, ""); }), Folder::other},
      {"the folder goes to the Bin", ENOENT, syncing, binFolder},
      {"the folder goes to the Bin late", ENOENT, placing, binFolder, Folder::hasCopy},
      {"written to late", ESTALE, placed, writing(file, "later"), Folder::hasCopy},
      {"a writer comes late", ETXTBSY, placed, openForWriting, Folder::hasCopy},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    bin("item/\n  inner/\n    file 5\n  pipe |\n  link -> nowhere");
    std::filesystem::create_directory(folder("").path());
    setModificationTime(file, 1e9);
    std::string left;
    int code = 0;
    const auto act = [&](int call) {
      if (call != row.step.second) return;
      row.happens();
      left = exists(file) ? readFile(file) : "nothing";
    };
    withActionBefore(row.step.first, act, [&] { code = codeOfPutBack(); });
    EXPECT_EQ(code, row.code);
    EXPECT_EQ(exists(file) ? readFile(file) : "nothing", left);
    EXPECT_TRUE(exists(trash("info/item.trashinfo")));
    const FileURL present = exists(folder("")) ? folder("") : binOfDrive;
    EXPECT_EQ(namesIn(present).size(), row.then == Folder::empty ? 0U : 1U);
    if (row.then == Folder::hasCopy) {
      EXPECT_EQ(readFile(FileURL(present.path() + "/item/inner/file")), "xxxxx");
    }
    writer.close();
    mountInside.reset();
    erase(place);
    erase(present);
  }
  for (const long call : {SYS_syncfs, SYS_fsync}) {
    bin("item 5");
    std::filesystem::create_directories(folder("").path());
    withFailingSystemCall(call, EIO, [&] { EXPECT_EQ(codeOfPutBack(), EIO); });
    EXPECT_EQ(readFile(place), "xxxxx");
    EXPECT_EQ(namesIn(folder("")).size(), call == SYS_fsync ? 1U : 0U);
  }
}

/// A process that is killed before a system call that it or its copying program makes.
TEST_F(PutBackByCopy, LosesNothingWhenItIsKilledAtAnyPoint) {
  if (!mount(TestFileSystem::Type::tmpfs)) GTEST_SKIP() << _drive->reason();
  const FileURL place = trash("files/item");
  const struct {
    const char* title;
    long call;
    int number;
    bool isInFolder = false;
    bool isInBin = true;
  } rows[] = {
      {"before the private directory", SYS_mkdirat, 1},
      {"before its place", SYS_mkdirat, 2},
      {"while it is copied", SYS_utimensat, 1},
      {"later while it is copied", SYS_utimensat, 3},
      {"before the copy is on the disk", SYS_syncfs, 1},
      {"before the copy is in its place", SYS_renameat2, 2},
      {"before its name is on the disk", SYS_fsync, 1, true},
      {"before the original goes", SYS_unlinkat, 1, true},
      {"while the original goes", SYS_unlinkat, 3, true, false},
  };
  // Whose parent dies becomes this process's child, so that its end can be seen.
  ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    bin("item/\n  a/\n    b 5\n  c 3\n  d -> a");
    setModificationTime(place, 1e9);
    const Tree before = treeAt(place);
    std::atomic<pid_t> process = 0;
    const auto act = [&](int call) {
      if (call != row.number) return;
      while (process == 0)
        std::this_thread::yield();
      kill(process, SIGKILL);
      siginfo_t end{};
      waitid(P_PID, static_cast<id_t>(process), &end, WEXITED | WNOWAIT);
    };
    withActionBefore(row.call, act, [&] {
      const pid_t forked = fork();
      if (forked == 0) {
        codeOfPutBack();
        _exit(0);
      }
      process = forked;
      for (int status = 0; waitpid(-1, &status, 0) > 0;)
        EXPECT_TRUE(WIFSIGNALED(status)) << "it or its copying program came to its end";
    });

    EXPECT_EQ(treeAt(place) == before, row.isInBin);
    listDirectory(folder(""));  // What opening it clears away is gone by then.
    EXPECT_EQ(namesIn(folder("")),
              row.isInFolder ? std::set<std::string>{"item"} : std::set<std::string>{});
    if (row.isInFolder) {
      EXPECT_EQ(treeAt(folder("item")), before);
    }
    for (const FileURL& url : {place, folder("item")})
      std::filesystem::remove_all(url.path());
  }
  prctl(PR_SET_CHILD_SUBREAPER, 0);
}

}  // namespace
}  // namespace tidemar
