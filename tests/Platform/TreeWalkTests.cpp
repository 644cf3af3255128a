#include <algorithm>
#include <cerrno>
#include <functional>
#include <map>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/DirectoryOpening.h"
#include "Platform/Files/Walk/TreeWalk.h"
#include "support/FailingSystemCall.h"
#include "support/FolderActions.h"
#include "support/SmallThread.h"
#include "support/TemporaryTree.h"

namespace tidemar {
namespace {

using namespace testing;

/// Writes down a walk: an entry a line, indented by its depth, "?" behind a hidden one.
class WalkRecorder : public WalkHandler {
 public:
  void entry(const WalkedEntry& entry) override {
    EXPECT_LE(entry.depth, _depth + 1) << entry.name << " came before the directory it lies in";
    _depth = entry.depth;
    ++count;
    deepest = std::max(deepest, entry.depth);
    lines.push_back(std::string(2 * (entry.depth - 1), ' ') + entry.name +
                    (entry.isHidden ? "?" : ""));
  }
  void failed(int code) override { failures.push_back(code); }

  std::vector<std::string> lines;
  std::vector<int> failures;
  std::size_t count = 0;
  std::size_t deepest = 0;

 private:
  std::size_t _depth = 0;
};

void walk(const FileURL& url, WalkHandler& handler) {
  FileDescriptor root = openDirectoryAt(url, "read");
  EntryValues values{};
  ASSERT_EQ(readEntryValues(root.get(), "", values), 0);
  TreeWalk(handler, HiddenNames::told).run(std::move(root), identityOf(values));
}

WalkRecorder walk(const FileURL& url) {
  WalkRecorder recorder;
  walk(url, recorder);
  return recorder;
}

std::vector<std::string> sorted(std::vector<std::string> lines) {
  std::ranges::sort(lines);
  return lines;
}

TEST(TreeWalk, MeetsEveryEntryOnceAndEntersNoLink) {
  TemporaryDirectory directory;
  makeTree(directory.url(), R"(
    root/
      a/
        deep/
          "line\nbreak \xff"
      .git/
        config
      loop -> ../root
      pipe |
      file
    outside/
      never)");
  const WalkRecorder recorder = walk(directory.url("root"));
  EXPECT_EQ(sorted(recorder.lines), sorted({"a", "  deep", "    line\nbreak \xff", ".git?",
                                            "  config", "loop", "pipe", "file"}));
  EXPECT_TRUE(recorder.failures.empty());
}

TEST(TreeWalk, EverythingInADirectoryFollowsItBeforeAnythingElse) {
  TemporaryDirectory directory;
  makeTree(directory.url(), R"(
    r/
      a/
        a1/
          x
        a2/
          x
      b/
        b1/
          x)");
  const WalkRecorder recorder = walk(directory.url("r"));
  std::vector<std::string> path;
  std::map<std::string, std::string> parentOf;
  for (const std::string& line : recorder.lines) {
    const std::size_t depth = line.find_first_not_of(' ') / 2;
    path.resize(depth);
    if (depth > 0) parentOf[line.substr(depth * 2)] = path.back();
    path.push_back(line.substr(depth * 2));
  }
  EXPECT_EQ(parentOf["a1"], "a");
  EXPECT_EQ(parentOf["a2"], "a");
  EXPECT_EQ(parentOf["b1"], "b");
}

TEST(TreeWalk, TheHiddenFileHidesExactNamesOfItsOwnDirectoryAlone) {
  TemporaryDirectory directory;
  makeTree(directory.url(), R"(
    r/
      secret
      secrets
      sub/
        secret)");
  writeFile(directory.url("r/.hidden"), "secret\n\nsub\n");
  EXPECT_EQ(sorted(walk(directory.url("r")).lines),
            sorted({".hidden?", "secret?", "secrets", "sub?", "  secret"}));

  for (const ListedEntry& entry : listDirectory(directory.url("r"))) {
    const auto name = std::string(entry.url.lastPathComponent());
    EXPECT_EQ(entry.values.isHidden, name != "secrets") << name;
    EXPECT_EQ(readResourceValues(entry.url), entry.values) << name;
  }
}

TEST(TreeWalk, AHiddenFileBehindManyEntriesStillCounts) {
  TemporaryDirectory directory;
  for (int i = 0; i < 3000; ++i)
    writeFile(directory.url("some-longer-name-" + std::to_string(i)), "");
  writeFile(directory.url(".hidden"), "some-longer-name-1234\n");
  std::vector<std::string> hidden;
  for (const ListedEntry& entry : listDirectory(directory.url())) {
    if (*entry.values.isHidden) hidden.emplace_back(entry.url.lastPathComponent());
  }
  EXPECT_EQ(sorted(hidden), sorted({".hidden", "some-longer-name-1234"}));
}

TEST(HiddenListReader, ReadsAFileAgainOnlyWhenItHasChanged) {
  TemporaryDirectory directory;
  writeFile(directory.url(".hidden"), "a\n");
  const FileDescriptor opened = openDirectoryAt(directory.url(), "read");
  EntryValues values{};
  do {
    readEntryValues(opened.get(), ".hidden", values);
  } while (changeTime(values) >= clockOfFiles());
  HiddenListReader reader;
  EXPECT_TRUE(reader.list(opened.get()).hides("a"));
  withFailingSystemCall(SYS_read, EIO, [&] {
    EXPECT_TRUE(reader.list(opened.get()).hides("a"));
    EXPECT_EQ(unlinkat(opened.get(), ".hidden", 0), 0);
    EXPECT_FALSE(reader.list(opened.get()).hides("a"));
    makeTree(directory.url(), ".hidden");
    EXPECT_THROW(reader.list(opened.get()), std::system_error);
  });
}

TEST(TreeWalk, AHiddenFileThatIsNoPlainFileIsNeverOpened) {
  TemporaryDirectory directory;
  makeTree(directory.url(), R"(
    fifo/
      .hidden |
      a
    link/
      .hidden -> ../list
      a
    list)");
  writeFile(directory.url("list"), "a\n");
  for (const char* name : {"fifo", "link"}) {
    EXPECT_EQ(sorted(walk(directory.url(name)).lines), sorted({".hidden?", "a"})) << name;
  }
}

TEST(TreeWalk, AHiddenFileTooLargeToReadMakesTheListingFail) {
  TemporaryDirectory directory;
  makeTree(directory.url(), "r/\n  .hidden 1048577\n  a");
  EXPECT_EQ(walk(directory.url("r")).failures, std::vector{EFBIG});
  EXPECT_THROW(listDirectory(directory.url("r")), PlatformError);
  EXPECT_THROW(readResourceValues(directory.url("r/a")), PlatformError);
}

TEST(TreeWalk, AnUnreadablePartIsAFailureAndTheRestIsRead) {
  TemporaryDirectory directory;
  makeTree(directory.url(), R"(
    r/
      locked/
        never
      open/
        seen)");
  chmod(directory.path("r/locked").c_str(), 0);
  asOrdinaryUser(directory.url(), [&] {
    const WalkRecorder recorder = walk(directory.url("r"));
    EXPECT_EQ(sorted(recorder.lines), sorted({"locked", "open", "  seen"}));
    EXPECT_EQ(recorder.failures, std::vector{EACCES});
  });
  chmod(directory.path("r/locked").c_str(), 0700);
}

/// Where large trees are made quickly.
std::string_view fastPlace() {
  return access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "";
}

/// Makes directories of one name inside one another, with a file in the last.
void makeDeepTree(const FileURL& root, int depth, const std::string& name = "d") {
  FileDescriptor directory(open(root.path().c_str(), O_RDONLY | O_DIRECTORY));
  for (int i = 0; i < depth; ++i) {
    ASSERT_EQ(mkdirat(directory.get(), name.c_str(), 0700), 0);
    directory = FileDescriptor(openat(directory.get(), name.c_str(), O_RDONLY | O_DIRECTORY));
    ASSERT_TRUE(directory);
  }
  FileDescriptor(openat(directory.get(), "leaf", O_CREAT | O_WRONLY, 0600));
}

TEST(TreeWalk, ATreeTwentyThousandDeepIsReadAndDeletedWithFewDescriptorsAndLittleStack) {
  TemporaryDirectory directory(fastPlace());
  constexpr int depth = 20'000;
  makeTree(directory.url(), "deep/");
  makeDeepTree(directory.url("deep"), depth - 1, std::string(200, 'd'));
  withSmallThread([&] {
    const WalkRecorder recorder = walk(directory.url());
    EXPECT_EQ(recorder.deepest, depth + 1U);
    EXPECT_EQ(recorder.failures, std::vector<int>());
    removeItem(directory.url("deep"));
  });
  EXPECT_FALSE(exists(directory.url("deep")));
}

TEST(TreeWalk, AMillionEntriesInOneDirectoryAreReadAndDeletedWithFewDescriptorsAndLittleStack) {
  TemporaryDirectory directory(fastPlace());
  constexpr int count = 1'000'000;
  makeTree(directory.url(), "many/");
  const FileDescriptor many(open(directory.path("many").c_str(), O_RDONLY | O_DIRECTORY));
  for (int i = 0; i < count; ++i) {
    ASSERT_EQ(mknodat(many.get(), std::to_string(i).c_str(), S_IFREG | 0600, 0), 0);
  }
  withSmallThread([&] {
    struct Counter : WalkHandler {
      void entry(const WalkedEntry&) override { ++entries; }
      void failed(int code) override { ADD_FAILURE() << code; }
      int entries = 0;
    } counter;
    walk(directory.url("many"), counter);
    EXPECT_EQ(counter.entries, count);
    removeItem(directory.url("many"));
  });
  EXPECT_FALSE(exists(directory.url("many")));
}

TEST(TreeWalk, ADirectoryMovedAwayDuringTheWalkIsAFailureAndNotAnotherTree) {
  TemporaryDirectory directory;
  makeTree(directory.url(), "r/\nelsewhere/");
  makeDeepTree(directory.url("r"), 40);
  std::string nineteen = directory.path("r");
  for (int i = 0; i < 19; ++i)
    nineteen += "/d";

  // Once the walk is at the bottom, a directory whose parent's descriptor is closed by then moves
  // away.
  struct Mover : WalkRecorder {
    void entry(const WalkedEntry& entry) override {
      WalkRecorder::entry(entry);
      if (std::string_view(entry.name) == "leaf") move();
    }
    std::function<void()> move;
  } mover;
  mover.move = [&] {
    ASSERT_EQ(rename(nineteen.c_str(), directory.path("elsewhere/d").c_str()), 0);
  };
  walk(directory.url("r"), mover);
  EXPECT_EQ(mover.failures.size(), 1U);
  EXPECT_EQ(mover.count, 41U);
}

}  // namespace
}  // namespace tidemar
