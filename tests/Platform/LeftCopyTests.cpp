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
  const struct {
    const char* command;  ///< Of the shell, in the folder, where $L is the directory.
    bool goes = false;
    std::string swept = name;
  } rows[] = {
      {"true", true},
      {"rm -r $L/0", true},
      {"rm -r $L/0 $L/tidemar", true},
      {"rm $L/tidemar"},
      {"chmod 750 $L"},
      {"chown 77:77 $L"},
      {"touch $L/0/more"},
      {"touch $L/more"},
      {"mkdir $L/1; touch $L/1/more"},
      {"mv $L copy; ln -s copy $L"},
      {"mv $L copy", false, "copy"},
      {"mv $L ${L}0", false, name + "0"},
      {"mv $L .tidemar-taken-0123456789abcdef", false, ".tidemar-taken-0123456789abcdef"},
  };
  const auto here = [&](const std::string& command) {
    return runCommand("cd '" + in("").path() + "'; L=" + name + "; " + command);
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.command);
    lay();
    here(row.command);
    const std::string all = "find . ! -name tidemar | sort";  // The mark alone is nobody's loss.
    const std::string before = here(all);
    sweep(row.swept);
    EXPECT_EQ(here(all), row.goes ? ".\n" : before);
    EXPECT_TRUE(exists(directory.url("kept/precious")));
    here("rm -r ../kept ../folder");
  }
  lay();
  {
    const BindMount mount(directory.url("kept"), in(name + "/0/item/a/b"));
    ASSERT_TRUE(mount.isMounted()) << mount.reason();
    sweep(name);
  }
  EXPECT_TRUE(exists(in(name + "/0/item/a/b/file")) && exists(directory.url("kept/precious")));
  const FileDescriptor lock(open(in(name).path().c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(flock(lock.get(), LOCK_EX), 0);
  sweep(name);
  EXPECT_TRUE(exists(in(name + "/0/item/a/b/file"))) << "in use";
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
