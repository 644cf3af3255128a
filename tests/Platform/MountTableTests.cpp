#include <algorithm>
#include <cerrno>
#include <set>
#include <string>
#include <utility>
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

/// What was read of a table: a line each with id, place, part, type and source, and "volume" behind
/// one that is a volume.
std::string text(const std::vector<Mount>& mounts) {
  std::string result;
  for (const Mount& mount : mounts) {
    result += std::to_string(mount.id) + "|" + mount.mountPoint + "|" + mount.root + "|" +
              mount.fileSystemType + "|" + mount.source + (mount.isVolume ? "|volume" : "") + "\n";
  }
  return result;
}

TEST(MountTable, ReadsEveryFormOfLine) {
  const struct {
    const char* line;
    std::string text;
  } rows[] = {
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
  for (const auto& row : rows) {
    const std::string expected = row.text.empty() ? "" : row.text + "\n";
    EXPECT_EQ(text(parseMountTable(row.line)), expected);
    EXPECT_EQ(text(parseMountTable(std::string(row.line) + "\n")), expected);
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
