#include <sys/file.h>

#include "Platform/Files/Changes/LeftCopy.h"
#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/FolderAndBin.h"

namespace tidemar::testing {
namespace {

const std::string name = ".tidemar-copy-0123456789abcdef";

/// A folder with a directory in it that a dead put-back has left, and what it must not touch.
class LeftCopy : public ::testing::Test {
 protected:
  void lay() {
    makeTree(directory.url(), R"(
      folder/
        copy/
          tidemar
          0/
            item/
              a/
                b/
                  file 3
              link -> ../../../../kept
              pipe |
      kept/
        precious)");
    changeMode("copy", 0700);
    std::filesystem::rename(in("copy").path(), in(name).path());
  }

  FileURL in(const std::string& relative) const { return directory.url("folder/" + relative); }

  void changeMode(const std::string& path, mode_t mode) const {
    ASSERT_EQ(chmod(in(path).path().c_str(), mode), 0);
  }

  void sweep(const std::string& entry) const {
    const FileDescriptor folder(open(in("").path().c_str(), O_RDONLY | O_CLOEXEC));
    sweepLeftCopy(folder.get(), entry);
  }

  const TemporaryDirectory directory;
};

TEST_F(LeftCopy, IsDeletedIfItIsSurelyOne) {
  if (geteuid() != 0) GTEST_SKIP() << "needs to be root";
  FileDescriptor lock;
  std::unique_ptr<BindMount> mount;
  const auto removing = [&](const std::string& path) {
    return [=, this] { std::filesystem::remove_all(in(path).path()); };
  };
  const auto adding = [&](const std::string& path) {
    return [=, this] { writeFile(in(path), ""); };
  };
  const auto moving = [&](const std::string& other) {
    return [=, this] { std::filesystem::rename(in(name).path(), in(other).path()); };
  };
  const struct {
    const char* title;
    std::function<void()> arrange;
    std::set<std::string> left;
    std::string swept = name;
  } rows[] = {
      {"a copy", [] {}, {}},
      {"an empty directory", removing(name + "/0"), {}},
      {"one that was never filled",
       [&] { removing(name + "/0")(), removing(name + "/tidemar")(); },
       {}},
      {"no mark", removing(name + "/tidemar"), {name}},
      {"open to others", [&] { changeMode(name, 0750); }, {name}},
      {"another user's", [&] { ASSERT_EQ(chown(in(name).path().c_str(), 77, 77), 0); }, {name}},
      {"in use",
       [&] {
         lock = FileDescriptor(open(in(name).path().c_str(), O_RDONLY | O_CLOEXEC));
         ASSERT_EQ(flock(lock.get(), LOCK_EX), 0);
       },
       {name}},
      {"something beside the copy", adding(name + "/0/more"), {name}},
      {"something beside its place", adding(name + "/more"), {name}},
      {"a second place", [&] { makeTree(in(name), "1/\n  more"); }, {name}},
      {"a mount in it",
       [&] {
         mount = std::make_unique<BindMount>(directory.url("kept"), in(name + "/0/item/a/b"));
         ASSERT_TRUE(mount->isMounted()) << mount->reason();
       },
       {name}},
      {"a link to one",
       [&] { moving("copy")(), std::filesystem::create_symlink("copy", in(name).path()); },
       {name, "copy"}},
      {"another name", moving("copy"), {"copy"}, "copy"},
      {"nearly its name", moving(name + "0"), {name + "0"}, name + "0"},
      {"taken items",
       moving(".tidemar-taken-0123456789abcdef"),
       {".tidemar-taken-0123456789abcdef"},
       ".tidemar-taken-0123456789abcdef"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    lay();
    row.arrange();
    sweep(row.swept);
    EXPECT_EQ(namesIn(in("")), row.left);
    if (!row.left.empty() && mount == nullptr) {
      EXPECT_TRUE(exists(in(*row.left.begin() + "/0/item/a/b/file")));
    }
    EXPECT_TRUE(exists(directory.url("kept/precious")));
    lock.close();
    mount.reset();
    for (const char* path : {"folder", "kept"})
      std::filesystem::remove_all(directory.url(path).path());
  }
}

TEST_F(LeftCopy, GoesWhateverItsModes) {
  lay();
  for (const char* path : {"/0/item/a/b/file", "/0/item/a/b", "/0/item/a", "/0/item"})
    changeMode(name + path, 0);
  asOrdinaryUser(directory.url(), [&] { sweep(name); });
  EXPECT_TRUE(namesIn(in("")).empty());
}

TEST_F(LeftCopy, GoesHoweverDeepItIs) {
  lay();
  withSmallThread([&] {
    FileDescriptor deepest(open(in(name + "/0/item").path().c_str(), O_RDONLY | O_CLOEXEC));
    for (int depth = 0; depth < 300; ++depth) {
      ASSERT_EQ(mkdirat(deepest.get(), "deeper", 0700), 0);
      deepest = FileDescriptor(openat(deepest.get(), "deeper", O_RDONLY | O_CLOEXEC));
    }
    sweep(name);
  });
  EXPECT_TRUE(namesIn(in("")).empty());
}

}  // namespace
}  // namespace tidemar::testing
