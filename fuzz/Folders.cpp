#include <array>

#include "Platform/Files/Places/MountTable.h"
#include "Platform/Files/Places/UserDirectories.h"
#include "Platform/Files/Tags.h"
#include "Platform/Files/Walk/HiddenList.h"
#include "TidemarKit/TemporaryTag.h"
#include "fuzz/Check.h"

namespace tidemar::fuzz {
namespace {

/// As the kernel writes it.
std::string escaped(std::string_view bytes) {
  constexpr std::string_view special = " \t\n\\";
  constexpr std::array escapes = {"\\040", "\\011", "\\012", "\\134"};
  std::string text;
  for (const char c : bytes) {
    const std::size_t found = special.find(c);
    text += found != special.npos ? escapes[found] : std::string(1, c);
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

std::string lineOf(const UserDirectory& directory) {
  std::string line = "XDG_" + directory.name + "_DIR=\"";
  for (const char c : directory.url.path()) {
    if (std::string_view("\"\\$`").contains(c)) line += '\\';
    line += c;
  }
  return line + "\"\n";
}

/// Whether the name stands in a list with nothing but blanks up to the commas around it.
bool listHoldsName(std::string_view list) {
  constexpr std::string_view blanks = " \t";
  constexpr std::string_view name = TemporaryTag::name;
  for (std::size_t i = list.find(name); i != list.npos; i = list.find(name, i + 1)) {
    const std::size_t before = list.substr(0, i).find_last_not_of(blanks);
    const std::size_t behind = list.find_first_not_of(blanks, i + name.size());
    if ((before == list.npos || list[before] == ',') &&
        (behind == list.npos || list[behind] == ','))
      return true;
  }
  return false;
}

}  // namespace

void checkHiddenList(std::string_view input) {
  const HiddenList list = HiddenList::parse(input);
  require(!list.hides(""), "no name isn't hidden");
  require(!list.hides("x\n" + std::string(input)), "two lines are no name");

  const std::string lines = "\n" + std::string(input) + "\n";
  std::string_view rest = input;
  // Some, since each is a search of the whole text.
  for (int searches = 0; searches < 16 && !rest.empty(); ++searches) {
    const std::string_view line = takeLine(rest);
    if (line.empty()) continue;
    require(list.hides(line), "a name that stands in the list is hidden");
    const std::string shorter(line.substr(0, line.size() - 1));
    const bool isListed = !shorter.empty() && lines.contains("\n" + shorter + "\n");
    require(list.hides(shorter) == (isListed || shorter.starts_with('.')),
            "a name that doesn't stand in the list isn't hidden");
  }
}

void checkMountTable(std::string_view input) {
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
    require(isAbsolute(mount.mountPoint), "a mount point is an absolute path");
    text += lineOf(mount);
  }
  require(parseMountTable(text) == mounts, "mounts as the kernel writes them are read as they are");
  requireLineByLine(input, parseMountTable);
}

void checkTagList(std::string_view input) {
  std::vector<std::string> tags = splitTagNames(input);
  require(joinTagNames(tags) == input, "what was read is written as it stood");
  require(std::ranges::none_of(tags, [](const auto& tag) { return tag.contains(','); }),
          "no tag holds a comma");
  require(TemporaryTag::holdsName(tags) == listHoldsName(input),
          "the name is found where it stands between commas, and only there");

  tags.emplace_back(TemporaryTag::name);
  const std::string longer = joinTagNames(tags);
  require(TemporaryTag::holdsName(splitTagNames(longer)), "a name that was added is found");
  require(longer.starts_with(input), "the tags in front of an added one stay as they are");
}

void checkUserDirectories(std::string_view input) {
  const FileURL home("/home/user");
  const std::vector<UserDirectory> directories = parseUserDirectories(input, home);
  std::string text;
  for (const UserDirectory& directory : directories) {
    require(isAbsolute(directory.url.path()), "a directory has an absolute path");
    require(directory.url != home, "the home is no directory of a purpose");
    text += lineOf(directory);
  }
  require(parseUserDirectories(text, home) == directories, "written directories are read again");
  requireLineByLine(input, [&](std::string_view part) { return parseUserDirectories(part, home); });
}

}  // namespace tidemar::fuzz
