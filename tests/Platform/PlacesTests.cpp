#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/WholeFile.h"
#include "Platform/Files/DiskFileManager.h"
#include "Platform/Files/Places/BootTime.h"
#include "Platform/Files/Places/MountTable.h"
#include "Platform/Files/Places/UserDirectories.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

using namespace std::string_literals;

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
  // An @ stands for the id of this boot.
  for (std::string record :
       {""s, "@\n\n"s, "\n1000\n"s, "@\n1000"s, "@\n-1000\n"s, "@\n" + later + "\n",
        "@\n1000\n1000\n"s, "another boot\n1000\n"s, "@\n99999999999999999999\n"s,
        "@\n" + std::string(200, '0') + "1000\n"}) {
    if (record.starts_with('@')) record.replace(0, 1, _bootID);
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
  for (const char* name : {"a.AppDir", "b.AppDir", "c.AppDir"})
    EXPECT_EQ(readResourceValues(directory.url(name)).isPackage, *name == 'a') << name;
}

TEST(FixedPlaces, HoldTheUsersAndTheProgramsOwnPlacesByTheirOwnNames) {
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

TEST(UserDirectories, AreReadFromTheLinesThatAShellWouldRead) {
  const auto parse = [](const std::string& line) {
    return parseUserDirectories("\n" + line + "\n", FileURL("/home/u"));
  };
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {R"(XDG_DESKTOP_DIR="$HOME/Schreibtisch")", "DESKTOP", "/home/u/Schreibtisch"},
      {R"(  XDG_MUSIC_DIR =  "/m"  )", "MUSIC", "/m"},
      {R"(XDG_MUSIC_DIR="/a\"b\\c")", "MUSIC", "/a\"b\\c"},
  };
  for (const auto& [line, name, path] : rows)
    EXPECT_EQ(parse(line), (std::vector{UserDirectory{name, FileURL(path)}})) << line;
  // The first one is switched off by this.
  for (const std::string& line :
       {R"(XDG_TEMPLATES_DIR="$HOME/")"s, R"(# XDG_MUSIC_DIR="/m")"s,
        R"(XDG_MUSIC_DIR="$HOMEWORK/m")"s, "XDG_MUSIC_DIR=\"/m\0n\""s, R"(XDG_MUSIC_DIR="m")"s,
        R"(XDG_MUSIC_DIR=/m)"s, R"(XDG_MUSIC_DIR="/m)"s, R"(XDG_DIR="/m")"s, ""s})
    EXPECT_TRUE(parse(line).empty()) << line;
}

/// What was read of a table: id, place, part, type and source of each, and "volume" behind one that
/// is a volume.
std::string text(const std::vector<Mount>& mounts) {
  std::string result;
  for (const Mount& mount : mounts) {
    result += std::to_string(mount.id) + "|" + mount.mountPoint + "|" + mount.root + "|" +
              mount.fileSystemType + "|" + mount.source + (mount.isVolume ? "|volume" : "");
  }
  return result;
}

TEST(MountTable, ReadsEveryFormOfLine) {
  const std::pair<std::string, const char*> rows[] = {
      {"22 1 8:1 / / rw,relatime - ext4 /dev/sda1 rw", "22|/|/|ext4|/dev/sda1|volume"},
      {"36 35 98:0 /m /mnt rw shared:1 master:2 - xfs /dev/sdb rw", "36|/mnt|/m|xfs|/dev/sdb"},
      {R"(7 1 0:5 /r\040s /a\040b\012c\134d rw - tmpfs none rw)", "7|/a b\nc\\d|/r s|tmpfs|none"},
      {R"(7 1 0:5 / /a\9 rw - tmpfs none rw)", "7|/a\\9|/|tmpfs|none|volume"},
      {"7 1 0:5 / /- rw - tmpfs none rw", "7|/-|/|tmpfs|none|volume"},
      {"7 1 0:5 / /a rw - tmpfs none", "7|/a|/|tmpfs|none|volume"},
      {"5 1 0:4 / /proc rw - proc proc rw", "5|/proc|/|proc|proc"},
      {"8 1 8:1 /a//deleted /b rw - ext4 /dev/sda1 rw", "8|/b|/a//deleted|ext4|/dev/sda1"},
      // Subvolumes, whose names may look like options, and directories in them.
      {"9 1 0:30 / /b rw - btrfs /dev/sda rw,subvolid=5,subvol=/", "9|/b|/|btrfs|/dev/sda|volume"},
      {R"(9 1 0:30 /@,\040h /b rw - btrfs /dev/sda rw,subvolid=6,subvol=/@,\040h)",
       "9|/b|/@, h|btrfs|/dev/sda|volume"},
      {"9 1 0:30 /x,subvol=/y /b rw - btrfs /dev/sda rw,subvolid=6,subvol=/x,subvol=/y",
       "9|/b|/x,subvol=/y|btrfs|/dev/sda|volume"},
      {"9 1 0:30 /y /b rw - btrfs /dev/sda rw,subvolid=6,subvol=/x,subvol=/y",
       "9|/b|/y|btrfs|/dev/sda"},
      {"9 1 0:30 /@home/u /b rw - btrfs /dev/sda rw,subvolid=6,subvol=/@home",
       "9|/b|/@home/u|btrfs|/dev/sda"},
      {"9 1 0:30 /@ /b rw - ext4 /dev/sda rw,subvolid=6,subvol=/@", "9|/b|/@|ext4|/dev/sda"},
      // A network share is mounted from a directory in it.
      {"9 1 0:31 /d /b rw - cifs //server/share/d rw", "9|/b|/d|cifs|//server/share/d|volume"},
      {"9 1 0:31 /d/e /b rw - cifs //server/share/d rw", "9|/b|/d/e|cifs|//server/share/d"},
      {"22 1 8:1 / / rw,relatime ext4 /dev/sda1 rw", ""},
      {"22 1 8:1 /", ""},
      {"22 1 8:1 / / rw - ext4", ""},
      {"x2 1 8:1 / / rw - ext4 /dev/sda1 rw", ""},
      {"7 1 0:5  /a rw - btrfs none rw", ""},
      {"7 1 0:5 / a rw - tmpfs none rw", ""},
      {R"(7 1 0:5 / /a\000b rw - tmpfs none rw)", ""},
  };
  for (const auto& [line, expected] : rows) {
    for (const char* end : {"", "\n"})
      EXPECT_EQ(text(parseMountTable(line + end)), expected) << line;
  }
}

std::set<std::string> volumePaths() {
  std::set<std::string> paths;
  for (const FileURL& url : DiskFileManager().mountedVolumeURLs())
    paths.insert(url.path());
  return paths;
}

TEST(Volumes, AreWholeFileSystemsAndSubvolumes) {
  const TestFileSystem drive(TestFileSystem::Type::btrfs);
  if (!drive.isMounted()) GTEST_SKIP() << drive.reason();
  makeTree(drive.url(), "part/");
  const FileURL subvolume = drive.url("a b,subvol=c");
  runCommand("btrfs subvolume create '" + subvolume.path() + "'");
  makeTree(subvolume, "part/");

  for (const auto& [shown, isVolume] : {std::pair{drive.url(), true},
                                        {drive.url("part"), false},
                                        {subvolume, true},
                                        {subvolume.appendingPathComponent("part"), false}}) {
    const TemporaryDirectory place;
    const BindMount mount(shown, place.url());
    ASSERT_TRUE(mount.isMounted()) << mount.reason();
    EXPECT_EQ(volumePaths().contains(place.path()), isVolume) << shown.path();
  }
  EXPECT_TRUE(volumePaths().contains(drive.url().path()));
  EXPECT_FALSE(volumePaths().contains("/proc"));
}

TEST(Volumes, AreToldWithoutAskingThemAndHaveACapacityUnlessTheyReportNone) {
  const VolumeCapacity capacity = DiskFileManager().volumeCapacity(FileURL("/"));
  EXPECT_GT(*capacity.total, 0);
  EXPECT_LE(*capacity.available, *capacity.total);
  EXPECT_EQ(DiskFileManager().volumeCapacity(FileURL("/proc")).total, std::nullopt)
      << "a volume of size 0 has no capacity that a rule could work with";
  const TemporaryDirectory place;
  const SilentMount mount(place.url());
  if (!mount.isMounted()) GTEST_SKIP() << mount.reason();
  EXPECT_TRUE(volumePaths().contains(place.path()));
  EXPECT_FALSE(mount.wasTouched());
}

TEST(MountTableReader, ReadsAgainOnlyWhenTheMountsHaveChanged) {
  TestFileSystem drive(TestFileSystem::Type::tmpfs);
  if (!drive.isMounted()) GTEST_SKIP() << drive.reason();
  MountTableReader reader;
  const auto isListed = [&] {
    return std::ranges::count(*reader.mounts(), drive.url().path(), &Mount::mountPoint) == 1;
  };
  const auto withoutReading = [](const auto& body) { withFailingSystemCall(SYS_lseek, EIO, body); };

  withoutReading([&] { EXPECT_THROW(reader.mounts(), PlatformError) << "the first use"; });
  EXPECT_TRUE(isListed());
  withoutReading([&] { EXPECT_TRUE(isListed()) << "nothing has changed"; });
  drive.unmount();
  withoutReading([&] {
    EXPECT_THROW(reader.mounts(), PlatformError) << "a change";
    EXPECT_THROW(reader.mounts(), PlatformError) << "the change isn't forgotten";
  });
  EXPECT_FALSE(isListed());
  drive.mount();
  EXPECT_TRUE(isListed());
}

}  // namespace
}  // namespace tidemar::testing
