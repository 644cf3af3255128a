#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/DiskFileManager.h"
#include "Platform/Files/Places/BootTime.h"
#include "Platform/Files/Places/MountTable.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryTree.h"

namespace tidemar {
namespace {

using namespace testing;

TEST(MountTable, ReadsEveryFormOfLine) {
  struct Row {
    const char* name;
    const char* line;
    std::optional<Mount> mount;
  };
  const Row rows[] = {
      {"without optional fields", "22 1 8:1 / / rw,relatime - ext4 /dev/sda1 rw",
       Mount{22, "/", "ext4", "/dev/sda1"}},
      {"with two", "36 35 98:0 /m /mnt rw shared:1 master:2 - xfs /dev/sdb rw",
       Mount{36, "/mnt", "xfs", "/dev/sdb"}},
      {"a blank, a newline and a backslash in the path",
       R"(7 1 0:5 / /a\040b\012c\134d rw - tmpfs none rw)",
       Mount{7, "/a b\nc\\d", "tmpfs", "none"}},
      {"a backslash that begins no escape", R"(7 1 0:5 / /a\9 rw - tmpfs none rw)",
       Mount{7, "/a\\9", "tmpfs", "none"}},
      {"digits that make no byte", R"(7 1 0:5 / /a\777 rw - tmpfs none rw)",
       Mount{7, "/a\\777", "tmpfs", "none"}},
      {"a path called -", "7 1 0:5 / /- rw - tmpfs none rw", Mount{7, "/-", "tmpfs", "none"}},
      {"without a separator", "22 1 8:1 / / rw,relatime ext4 /dev/sda1 rw", std::nullopt},
      {"cut off", "22 1 8:1 /", std::nullopt},
      {"an id that is no number", "x2 1 8:1 / / rw - ext4 /dev/sda1 rw", std::nullopt},
      {"a path that isn't absolute", "7 1 0:5 / a rw - tmpfs none rw", std::nullopt},
      {"a NUL in the path", R"(7 1 0:5 / /a\000b rw - tmpfs none rw)", std::nullopt},
      {"nothing", "", std::nullopt},
  };
  for (const Row& row : rows) {
    const std::vector<Mount> expected = row.mount ? std::vector{*row.mount} : std::vector<Mount>();
    EXPECT_EQ(parseMountTable(row.line), expected) << row.name;
    EXPECT_EQ(parseMountTable(std::string(row.line) + "\n"), expected) << row.name;
  }
}

TEST(Volumes, AreTheMountsWithoutTheKernelsOwn) {
  const auto volumes = DiskFileManager().mountedVolumeURLs();
  EXPECT_FALSE(volumes.empty());
  EXPECT_EQ(std::ranges::find(volumes, FileURL("/proc")), volumes.end());

  const VolumeCapacity capacity = DiskFileManager().volumeCapacity(FileURL("/"));
  EXPECT_GT(*capacity.total, 0);
  EXPECT_LE(*capacity.available, *capacity.total);
  EXPECT_EQ(DiskFileManager().volumeCapacity(FileURL("/proc")).total, std::nullopt)
      << "a volume of size 0 has no capacity that a rule could work with";
}

TEST(BootTime, IsTheEarliestSeenInOneBoot) {
  const Date early{100};
  const Date late{200};
  EXPECT_EQ(earliestBootRecord(std::nullopt, "a", late), (BootRecord{"a", late}));
  EXPECT_EQ(earliestBootRecord(BootRecord{"a", early}, "a", late), (BootRecord{"a", early}))
      << "a clock set forward must not look like a restart";
  EXPECT_EQ(earliestBootRecord(BootRecord{"a", late}, "a", early), (BootRecord{"a", early}));
  EXPECT_EQ(earliestBootRecord(BootRecord{"a", early}, "b", late), (BootRecord{"b", late}))
      << "a real restart";
}

TEST(BootTime, IsKeptBetweenTwoReadings) {
  TemporaryDirectory directory;
  const ScopedEnvironment runtime("XDG_RUNTIME_DIR", directory.path());
  const FileURL file = directory.url("tidemar-boot-time");
  const Date real = readBootTime();
  const std::string record = readFile(file);
  const std::string bootID = record.substr(0, record.find('\n'));

  writeFile(file, bootID + "\n1000\n");
  EXPECT_EQ(readBootTime(), Date{1000});
  for (const std::string& damaged :
       {std::string(), bootID, bootID + "\n", bootID + "\nsoon\n", std::string("\n\n")}) {
    writeFile(file, damaged);
    EXPECT_EQ(readBootTime(), real) << damaged;
  }
}

TEST(BootTime, StandsInItsOwnLine) {
  EXPECT_EQ(bootTimeInProcStat("cpu 1 2\nbtime 1700000000\nprocesses 5\n"), Date{1700000000});
  EXPECT_EQ(bootTimeInProcStat("xbtime 17\nintr 3 btime 4\n"), std::nullopt);
  EXPECT_EQ(bootTimeInProcStat("btime \n"), std::nullopt);
}

TEST(Packages, AreToldByTheEndingOfADirectorysName) {
  for (const char* name :
       {"Tool.AppDir", "tool.appdir", "x.app", "Pictures.PhotosLibrary", "a.b.rtfd"}) {
    EXPECT_TRUE(isPackageName(name)) << name;
  }
  for (const char* name : {".app", "app", "x.apps", "x.app.bak", "xapp", ""})
    EXPECT_FALSE(isPackageName(name)) << name;

  TemporaryDirectory directory;
  makeTree(directory.url(), "a.app/\nb.app\nc.app -> a.app");
  EXPECT_EQ(DiskFileManager().resourceValues(directory.url("a.app")).isPackage, true);
  EXPECT_EQ(DiskFileManager().resourceValues(directory.url("b.app")).isPackage, false)
      << "a plain file";
  EXPECT_EQ(DiskFileManager().resourceValues(directory.url("c.app")).isPackage, false) << "a link";
}

TEST(SystemDirectories, HoldTheUsersDesktopAndDocumentsByTheirOwnNames) {
  TemporaryDirectory home;
  const ScopedHome scoped(home.url());
  makeTree(home.url(), ".config/");
  writeFile(home.url(".config/user-dirs.dirs"),
            "XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\nXDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n"
            "XDG_DOWNLOAD_DIR=\"$HOME/Downloads\"\n");
  const auto directories = DiskFileManager().systemDirectoryURLs();
  const auto has = [&](const FileURL& url) {
    return std::ranges::find(directories, url) != directories.end();
  };
  EXPECT_TRUE(has(home.url("Schreibtisch")));
  EXPECT_TRUE(has(home.url("Dokumente")));
  EXPECT_TRUE(has(home.url(".config")));
  EXPECT_TRUE(has(FileURL("/home")));
  EXPECT_FALSE(has(home.url("Downloads")));
}

}  // namespace
}  // namespace tidemar
