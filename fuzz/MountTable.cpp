#include "Platform/Files/Places/MountTable.h"

#include <array>
#include <cstdio>

#include "fuzz/Check.h"

namespace tidemar::fuzz {
namespace {

/// As the kernel writes it.
std::string escaped(std::string_view bytes) {
  std::string text;
  for (const char c : bytes) {
    if (std::string_view(" \t\n\\").find(c) == std::string_view::npos) {
      text += c;
      continue;
    }
    std::array<char, 5> escape{};
    std::snprintf(escape.data(), escape.size(), "\\%03o", static_cast<unsigned>(c));
    text += escape.data();
  }
  return text;
}

std::string lineOf(const Mount& mount) {
  return std::to_string(mount.id) + " 1 0:1 / " + escaped(mount.mountPoint) +
         " rw shared:1 master:2 - " + mount.fileSystemType + " " + escaped(mount.source) + " rw\n";
}

}  // namespace

void check(std::string_view input) {
  const std::vector<Mount> mounts = parseMountTable(input);
  std::string text;
  for (const Mount& mount : mounts) {
    require(mount.mountPoint.starts_with('/') && mount.mountPoint.find('\0') == std::string::npos,
            "a mount point is an absolute path");
    isPseudoFileSystem(mount.fileSystemType);
    text += lineOf(mount);
  }
  require(parseMountTable(text) == mounts, "mounts as the kernel writes them are read as they are");

  std::vector<Mount> byLine;
  while (!input.empty()) {
    for (Mount& mount : parseMountTable(takeLine(input)))
      byLine.push_back(std::move(mount));
  }
  require(byLine == mounts, "no line has a say in another");
}

}  // namespace tidemar::fuzz
