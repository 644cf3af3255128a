#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/DiskFileManager.h"
#include "Platform/Files/Places/BootTime.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryTree.h"

namespace tidemar {
namespace {

using namespace testing;

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
  for (const char* name : {"Tool.AppDir", "tool.appdir", "Pictures.PhotosLibrary", "a.b.rtfd"})
    EXPECT_TRUE(isPackageName(name)) << name;
  for (const char* name : {".appdir", "appdir", "x.appdirs", "x.appdir.bak", "xappdir", "",
                           "site.app", "x.framework", "x.bundle"})
    EXPECT_FALSE(isPackageName(name)) << name;

  TemporaryDirectory directory;
  makeTree(directory.url(), "a.AppDir/\nb.AppDir\nc.AppDir -> a.AppDir");
  const auto isPackage = [&](const char* name) {
    return DiskFileManager().resourceValues(directory.url(name)).isPackage;
  };
  EXPECT_EQ(isPackage("a.AppDir"), true);
  EXPECT_EQ(isPackage("b.AppDir"), false) << "a plain file";
  EXPECT_EQ(isPackage("c.AppDir"), false) << "a link";
}

TEST(SystemDirectories, HoldTheUsersAndTheProgramsOwnPlacesByTheirOwnNames) {
  TemporaryDirectory home;
  const ScopedHome scoped(home.url());
  const ScopedEnvironment data("XDG_DATA_HOME", home.path("data"));
  makeTree(home.url(), ".config/");
  writeFile(home.url(".config/user-dirs.dirs"),
            "XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\nXDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n"
            "XDG_DOWNLOAD_DIR=\"$HOME/Downloads\"\n");
  const auto directories = DiskFileManager().systemDirectoryURLs();
  const auto has = [&](const FileURL& url) { return std::ranges::count(directories, url) > 0; };
  for (const char* name :
       {"Schreibtisch", "Dokumente", ".config", ".local", "data", "data/Tidemar", "data/Trash"})
    EXPECT_TRUE(has(home.url(name))) << name;
  EXPECT_TRUE(has(FileURL("/home")));
  EXPECT_FALSE(has(home.url("Downloads")));
}

}  // namespace
}  // namespace tidemar
