#include <algorithm>
#include <atomic>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/WholeFile.h"
#include "Platform/Files/DiskFileManager.h"
#include "Platform/Files/Places/BootTime.h"
#include "support/FileExpectations.h"
#include "support/FolderActions.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryTree.h"

namespace tidemar {
namespace {

using namespace testing;

class KeptBootTime : public ::testing::Test {
 protected:
  TemporaryDirectory _directory;
  ScopedEnvironment _runtime{"XDG_RUNTIME_DIR", _directory.path()};
  FileURL _file = _directory.url("tidemar-boot-time");
  Date _real = readBootTime();
  std::string _record = readFile(_file);
  std::string _bootID = _record.substr(0, _record.find('\n'));
};

TEST_F(KeptBootTime, IsTakenOnlyFromAWholeAndPossibleRecord) {
  writeFile(_file, _bootID + "\n1000\n");
  EXPECT_EQ(readBootTime(), Date{1000});
  const std::string later = std::to_string(std::int64_t(_real.secondsSince1970) + 1);
  const std::string damaged[] = {
      "",
      _bootID + "\n\n",
      "\n1000\n",
      _bootID + "\n1000",
      _bootID + "\n-1000\n",
      _bootID + "\n" + later + "\n",
      _bootID + "\n1000\n1000\n",
      "another boot\n1000\n",
      _bootID + "\n99999999999999999999\n",
      _bootID + "\n" + std::string(200, '0') + "1000\n",
  };
  for (const std::string& record : damaged) {
    writeFile(_file, record);
    EXPECT_EQ(readBootTime(), _real) << record;
    EXPECT_EQ(readFile(_file), _record) << record;
  }
}

TEST_F(KeptBootTime, ReplacesWhatIsNoRecordAndTouchesNothingElse) {
  const std::string name = "tidemar-boot-time";
  const std::string foreign = _bootID + "\n1000\n";
  writeFile(_directory.url("foreign"), foreign);
  for (const char* instead : {" -> foreign", " -> nowhere", " |", "/"}) {
    SCOPED_TRACE(instead);
    ASSERT_EQ(unlink(_file.path().c_str()), 0);
    makeTree(_directory.url(), name + instead);
    EXPECT_EQ(readBootTime(), _real);
    EXPECT_EQ(readFile(_directory.url("foreign")), foreign);
    EXPECT_EQ(namesIn(_directory.url()), (std::set<std::string>{name, "foreign"}));
    if (std::string_view(instead) != "/") {
      EXPECT_EQ(readFile(_file), _record);
    }
  }
  ASSERT_EQ(rmdir(_file.path().c_str()), 0);
  writeFile(_file, foreign);
  if (chown(_file.path().c_str(), 12345, 12345) == 0) {
    EXPECT_EQ(readBootTime(), _real) << "another user's";
  }
}

TEST_F(KeptBootTime, IsNeverSeenHalfWrittenByAnotherReader) {
  const auto writeAnew = [&] {
    for (int i = 0; i < 500; ++i) {
      unlink(_file.path().c_str());
      EXPECT_EQ(readBootTime(), _real);
    }
  };
  std::atomic<bool> isOver = false;
  std::thread first(writeAnew);
  std::thread second(writeAnew);
  std::thread reader([&] {
    while (!isOver) {
      const auto text = WholeFile::read(_file);
      EXPECT_EQ(text.value_or(_record), _record);
    }
  });
  first.join();
  second.join();
  isOver = true;
  reader.join();
  EXPECT_LE(namesIn(_directory.url()).size(), 1U) << "no temporary file is left";
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
    return readResourceValues(directory.url(name)).isPackage;
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
