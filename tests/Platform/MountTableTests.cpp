#include <algorithm>
#include <cerrno>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/syscall.h>

#include "Platform/Files/DiskFileManager.h"
#include "Platform/Files/Places/MountTable.h"
#include "support/FailingSystemCall.h"
#include "support/SilentMount.h"
#include "support/TemporaryTree.h"
#include "support/TestFileSystems.h"

namespace tidemar {
namespace {

using namespace testing;

TEST(MountTable, ReadsEveryFormOfLine) {
  constexpr bool volume = true;
  constexpr bool part = false;
  struct Row {
    const char* name;
    const char* line;
    std::optional<Mount> mount;
  };
  const Row rows[] = {
      {"without optional fields", "22 1 8:1 / / rw,relatime - ext4 /dev/sda1 rw",
       Mount{22, "/", "/", "ext4", "/dev/sda1", volume}},
      {"with two, of a part", "36 35 98:0 /m /mnt rw shared:1 master:2 - xfs /dev/sdb rw",
       Mount{36, "/mnt", "/m", "xfs", "/dev/sdb", part}},
      {"a blank, a newline and a backslash in the path and the part",
       R"(7 1 0:5 /r\040s /a\040b\012c\134d rw - tmpfs none rw)",
       Mount{7, "/a b\nc\\d", "/r s", "tmpfs", "none", part}},
      {"a backslash that begins no escape", R"(7 1 0:5 / /a\9 rw - tmpfs none rw)",
       Mount{7, "/a\\9", "/", "tmpfs", "none", volume}},
      {"a path called -", "7 1 0:5 / /- rw - tmpfs none rw",
       Mount{7, "/-", "/", "tmpfs", "none", volume}},
      {"without the file system's options", "7 1 0:5 / /a rw - tmpfs none",
       Mount{7, "/a", "/", "tmpfs", "none", volume}},
      {"the kernel's own", "5 1 0:4 / /proc rw - proc proc rw",
       Mount{5, "/proc", "/", "proc", "proc", part}},
      {"a part that was deleted", "8 1 8:1 /a//deleted /b rw - ext4 /dev/sda1 rw",
       Mount{8, "/b", "/a//deleted", "ext4", "/dev/sda1", part}},
      {"all of a btrfs", "9 1 0:30 / /b rw - btrfs /dev/sda rw,subvolid=5,subvol=/",
       Mount{9, "/b", "/", "btrfs", "/dev/sda", volume}},
      {"a subvolume", R"(9 1 0:30 /@,\040h /b rw - btrfs /dev/sda rw,subvolid=6,subvol=/@,\040h)",
       Mount{9, "/b", "/@, h", "btrfs", "/dev/sda", volume}},
      {"a subvolume with a name like an option",
       "9 1 0:30 /x,subvol=/y /b rw - btrfs /dev/sda rw,subvolid=6,subvol=/x,subvol=/y",
       Mount{9, "/b", "/x,subvol=/y", "btrfs", "/dev/sda", volume}},
      {"a directory in such a one",
       "9 1 0:30 /y /b rw - btrfs /dev/sda rw,subvolid=6,subvol=/x,subvol=/y",
       Mount{9, "/b", "/y", "btrfs", "/dev/sda", part}},
      {"a directory in a subvolume",
       "9 1 0:30 /@home/u /b rw - btrfs /dev/sda rw,subvolid=6,subvol=/@home",
       Mount{9, "/b", "/@home/u", "btrfs", "/dev/sda", part}},
      {"a directory with a subvolume's name on another type",
       "9 1 0:30 /@ /b rw - ext4 /dev/sda rw,subvolid=6,subvol=/@",
       Mount{9, "/b", "/@", "ext4", "/dev/sda", part}},
      {"a share mounted from a directory in it", "9 1 0:31 /d /b rw - cifs //server/share/d rw",
       Mount{9, "/b", "/d", "cifs", "//server/share/d", volume}},
      {"a directory of such a share", "9 1 0:31 /d/e /b rw - cifs //server/share/d rw",
       Mount{9, "/b", "/d/e", "cifs", "//server/share/d", part}},
      {"without a separator", "22 1 8:1 / / rw,relatime ext4 /dev/sda1 rw", std::nullopt},
      {"cut off", "22 1 8:1 /", std::nullopt},
      {"cut off behind the separator", "22 1 8:1 / / rw - ext4", std::nullopt},
      {"an id that is no number", "x2 1 8:1 / / rw - ext4 /dev/sda1 rw", std::nullopt},
      {"no part of the file system", "7 1 0:5  /a rw - btrfs none rw", std::nullopt},
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

  const struct {
    const char* title;
    FileURL shown;
    bool isVolume;
  } rows[] = {
      {"all of it", drive.url(), true},
      {"a directory", drive.url("part"), false},
      {"a subvolume", subvolume, true},
      {"a directory in a subvolume", subvolume.appendingPathComponent("part"), false},
  };
  for (const auto& row : rows) {
    const TemporaryDirectory place;
    const BindMount mount(row.shown, place.url());
    ASSERT_TRUE(mount.isMounted()) << mount.reason();
    EXPECT_EQ(volumePaths().contains(place.path()), row.isVolume) << row.title;
  }
  EXPECT_TRUE(volumePaths().contains(drive.url().path()));
  EXPECT_FALSE(volumePaths().contains("/proc"));
}

TEST(Volumes, AreToldWithoutAskingThem) {
  const TemporaryDirectory place;
  const SilentMount mount(place.url());
  if (!mount.isMounted()) GTEST_SKIP() << mount.reason();
  EXPECT_TRUE(volumePaths().contains(place.path()));
  EXPECT_FALSE(mount.wasTouched());
}

TEST(Volumes, HaveACapacityUnlessTheyReportNone) {
  const VolumeCapacity capacity = DiskFileManager().volumeCapacity(FileURL("/"));
  EXPECT_GT(*capacity.total, 0);
  EXPECT_LE(*capacity.available, *capacity.total);
  EXPECT_EQ(DiskFileManager().volumeCapacity(FileURL("/proc")).total, std::nullopt)
      << "a volume of size 0 has no capacity that a rule could work with";
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
}  // namespace tidemar
