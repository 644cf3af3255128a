#include "Platform/Files/Descriptors/DirectoryOpening.h"
#include "Platform/Files/Walk/TreeWalk.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

/// Writes down the paths of what a walk meets, "?" behind a hidden one.
class WalkRecorder : public WalkHandler {
 public:
  void entry(const WalkedEntry& entry) override {
    ASSERT_LE(entry.depth, _way.size() + 1) << entry.name << " came before its directory";
    _way.resize(entry.depth);
    _way[entry.depth - 1] = (entry.depth > 1 ? _way[entry.depth - 2] + "/" : "") + entry.name;
    paths.insert(_way.back() + (entry.isHidden ? "?" : ""));
  }
  void failed(int code) override { failures.push_back(code); }

  std::multiset<std::string> paths;
  std::vector<int> failures;

 private:
  std::vector<std::string> _way;
};

using Paths = std::multiset<std::string>;

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

TEST(TreeWalk, MeetsEveryEntryOnceBehindItsDirectoryAndEntersNoLinkAndNothingLocked) {
  TemporaryDirectory directory;
  makeTree(directory.url(), R"(
    root/
      a/
        deep/
          "line\nbreak \xff"
        deeper/
          x
      .git/
        config
      loop -> ../root
      locked/
        never
      pipe |
      file
    outside/
      never)");
  chmod(directory.path("root/locked").c_str(), 0);
  asOrdinaryUser(directory.url(), [&] {
    const WalkRecorder recorder = walk(directory.url("root"));
    EXPECT_EQ(recorder.paths,
              (Paths{"a", "a/deep", "a/deep/line\nbreak \xff", "a/deeper", "a/deeper/x", ".git?",
                     ".git/config", "loop", "locked", "pipe", "file"}));
    EXPECT_EQ(recorder.failures, std::vector{EACCES});
  });
  chmod(directory.path("root/locked").c_str(), 0700);
}

TEST(TreeWalk, TheHiddenFileHidesExactNamesOfItsOwnDirectoryAloneIfItIsAPlainOneOfSomeSize) {
  TemporaryDirectory directory;
  makeTree(directory.url(), R"(
    r/
      secret
      secrets
      sub/
        secret
    fifo/
      .hidden |
      secret
    link/
      .hidden -> ../r/.hidden
      secret
    large/
      .hidden 1048577
      secret)");
  writeFile(directory.url("r/.hidden"), "sub\n\nsecret\n");
  EXPECT_EQ(walk(directory.url("r")).paths,
            (Paths{".hidden?", "secret?", "secrets", "sub?", "sub/secret"}));

  for (const ListedEntry& entry : listDirectory(directory.url("r"))) {
    const auto name = std::string(entry.url.lastPathComponent());
    EXPECT_EQ(entry.values.isHidden, name != "secrets") << name;
    EXPECT_EQ(readResourceValues(entry.url), entry.values) << name;
  }
  for (const char* name : {"fifo", "link"})
    EXPECT_EQ(walk(directory.url(name)).paths, (Paths{".hidden?", "secret"})) << name;
  EXPECT_EQ(walk(directory.url("large")).failures, std::vector{EFBIG});
  EXPECT_THROW(listDirectory(directory.url("large")), PlatformError);
  EXPECT_THROW(readResourceValues(directory.url("large/secret")), PlatformError);
}

TEST(TreeWalk, AHiddenFileBehindManyEntriesStillCounts) {
  TemporaryDirectory directory;
  for (int i = 0; i < 3000; ++i)
    writeFile(directory.url("some-longer-name-" + std::to_string(i)), "");
  writeFile(directory.url(".hidden"), "some-longer-name-1234\n");
  Paths hidden;
  const auto entries = listDirectory(directory.url());
  EXPECT_EQ(entries.size(), 3001U);
  for (const ListedEntry& entry : entries) {
    if (*entry.values.isHidden) hidden.emplace(entry.url.lastPathComponent());
  }
  EXPECT_EQ(hidden, (Paths{".hidden", "some-longer-name-1234"}));
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

/// Reads what lies in a directory and deletes it, with few descriptors and little stack.
void expectIsReadAndDeleted(const FileURL& url, int count) {
  withSmallThread([&] {
    struct Counter : WalkHandler {
      void entry(const WalkedEntry&) override { ++entries; }
      void failed(int code) override { ADD_FAILURE() << code; }
      int entries = 0;
    } counter;
    walk(url, counter);
    EXPECT_EQ(counter.entries, count);
    removeItem(url);
  });
  EXPECT_FALSE(exists(url));
}

TEST(TreeWalk, ATreeTwentyThousandDeepIsReadAndDeleted) {
  TemporaryDirectory directory(fastPlace());
  constexpr int depth = 20'000;
  makeTree(directory.url(), "deep/");
  makeDeepTree(directory.url("deep"), depth - 1, std::string(200, 'd'));
  expectIsReadAndDeleted(directory.url("deep"), depth);
}

TEST(TreeWalk, AMillionEntriesInOneDirectoryAreReadAndDeleted) {
  TemporaryDirectory directory(fastPlace());
  constexpr int count = 1'000'000;
  makeTree(directory.url(), "many/");
  const FileDescriptor many(open(directory.path("many").c_str(), O_RDONLY | O_DIRECTORY));
  for (int i = 0; i < count; ++i) {
    ASSERT_EQ(mknodat(many.get(), std::to_string(i).c_str(), S_IFREG | 0600, 0), 0);
  }
  expectIsReadAndDeleted(directory.url("many"), count);
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
  EXPECT_EQ(mover.paths.size(), 41U);
}

}  // namespace
}  // namespace tidemar::testing
