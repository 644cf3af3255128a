#include "Platform/Files/Places/MountTable.h"

#include <array>

#include "fuzz/Check.h"

namespace tidemar::fuzz {
namespace {

/// As the kernel writes it.
std::string escaped(std::string_view bytes) {
  constexpr std::string_view special = " \t\n\\";
  constexpr std::array escapes = {"\\040", "\\011", "\\012", "\\134"};
  std::string text;
  for (const char c : bytes) {
    if (const std::size_t found = special.find(c); found != special.npos) {
      text += escapes[found];
    } else {
      text += c;
    }
  }
  return text;
}

std::string lineOf(const Mount& mount) {
  const bool isSubvolume = mount.fileSystemType == "btrfs" && mount.isVolume && mount.root != "/";
  return std::to_string(mount.id) + " 1 0:1 " + escaped(mount.root) + " " +
         escaped(mount.mountPoint) + " rw shared:1 master:2 - " + mount.fileSystemType + " " +
         escaped(mount.source) + " rw" + (isSubvolume ? ",subvol=" + escaped(mount.root) : "") +
         "\n";
}

}  // namespace

void check(std::string_view input) {
  const std::string_view name = input.substr(0, 64);
  const std::string path = "/" + std::string(name.substr(0, name.find('\0')));
  const Mount subvolume{1, path, path, "btrfs", path, true};
  require(parseMountTable(lineOf(subvolume)) == std::vector{subvolume},
          "a subvolume's mount is a volume, whatever its path");
  const Mount part{2, path, path, "ext4", path, path == "/"};
  require(parseMountTable(lineOf(part)) == std::vector{part},
          "a mount of a part of a file system is no volume");

  const std::vector<Mount> mounts = parseMountTable(input);
  std::string text;
  for (const Mount& mount : mounts) {
    require(mount.mountPoint.starts_with('/') && mount.mountPoint.find('\0') == std::string::npos,
            "a mount point is an absolute path");
    text += lineOf(mount);
  }
  require(parseMountTable(text) == mounts, "mounts as the kernel writes them are read as they are");
  requireLineByLine(input, parseMountTable);
}

}  // namespace tidemar::fuzz
