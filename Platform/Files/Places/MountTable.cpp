#include "Platform/Files/Places/MountTable.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fstream>
#include <iterator>
#include <optional>

#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

std::vector<std::string_view> fieldsOf(std::string_view line) {
  std::vector<std::string_view> fields;
  while (!line.empty()) {
    const std::size_t end = std::min(line.find(' '), line.size());
    fields.push_back(line.substr(0, end));
    line.remove_prefix(std::min(end + 1, line.size()));
  }
  return fields;
}

/// Blank, tab, newline and backslash stand as a backslash with three octal digits.
std::string withoutOctalEscapes(std::string_view field) {
  const auto isOctal = [](char c) { return c >= '0' && c <= '7'; };
  std::string bytes;
  for (std::size_t i = 0; i < field.size(); ++i) {
    const std::string_view digits = field.substr(i + 1 < field.size() ? i + 1 : field.size(), 3);
    if (field[i] == '\\' && digits.size() == 3 && std::ranges::all_of(digits, isOctal) &&
        digits[0] <= '3') {
      bytes +=
          static_cast<char>((digits[0] - '0') * 64 + (digits[1] - '0') * 8 + (digits[2] - '0'));
      i += 3;
    } else {
      bytes += field[i];
    }
  }
  return bytes;
}

std::optional<Mount> parseLine(std::string_view line) {
  // id, parent, major:minor, root, mount point, options, any number of further fields, "-", type,
  // source
  const std::vector<std::string_view> fields = fieldsOf(line);
  const auto separator = std::ranges::find(fields, "-");
  if (fields.size() < 6 || fields.end() - separator < 3 || separator - fields.begin() < 6)
    return std::nullopt;
  Mount mount;
  const auto [end, error] =
      std::from_chars(fields[0].data(), fields[0].data() + fields[0].size(), mount.id);
  if (error != std::errc() || end != fields[0].data() + fields[0].size()) return std::nullopt;
  mount.mountPoint = withoutOctalEscapes(fields[4]);
  if (!mount.mountPoint.starts_with('/') || mount.mountPoint.contains('\0')) return std::nullopt;
  mount.fileSystemType = separator[1];
  mount.source = withoutOctalEscapes(separator[2]);
  return mount;
}

}  // namespace

std::vector<Mount> readMountTable() {
  constexpr const char* path = "/proc/self/mountinfo";
  std::ifstream file(path, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  if (!file.is_open() || text.empty())
    throw PlatformError("read", FileURL(path), EIO, "the mounts can't be told");
  return parseMountTable(text);
}

std::vector<Mount> parseMountTable(std::string_view text) {
  std::vector<Mount> mounts;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    if (auto mount = parseLine(text.substr(0, end))) mounts.push_back(std::move(*mount));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return mounts;
}

bool isPseudoFileSystem(std::string_view type) noexcept {
  constexpr std::array<std::string_view, 22> types = {
      "autofs",     "binfmt_misc", "bpf",      "cgroup",   "cgroup2", "configfs",
      "debugfs",    "devpts",      "devtmpfs", "efivarfs", "fusectl", "hugetlbfs",
      "mqueue",     "nsfs",        "proc",     "pstore",   "ramfs",   "rpc_pipefs",
      "securityfs", "selinuxfs",   "sysfs",    "tracefs"};
  return std::ranges::find(types, type) != types.end();
}

}  // namespace tidemar
