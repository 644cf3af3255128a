#include "Platform/Files/Places/MountTable.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/ReadWrite.h"
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

/// Whether this type of file system holds the kernel's own objects and no files of anyone.
bool isPseudoFileSystem(std::string_view type) {
  constexpr std::array<std::string_view, 22> types = {
      "autofs",     "binfmt_misc", "bpf",      "cgroup",   "cgroup2", "configfs",
      "debugfs",    "devpts",      "devtmpfs", "efivarfs", "fusectl", "hugetlbfs",
      "mqueue",     "nsfs",        "proc",     "pstore",   "ramfs",   "rpc_pipefs",
      "securityfs", "selinuxfs",   "sysfs",    "tracefs"};
  return std::ranges::find(types, type) != types.end();
}

/// The subvolume of btrfs in which a mount lies. It stands last, since a comma in it isn't escaped.
std::string_view subvolumeIn(std::string_view fileSystemOptions) {
  constexpr std::string_view key = ",subvol=";
  const std::size_t start = fileSystemOptions.find(key);
  return start == fileSystemOptions.npos ? "" : fileSystemOptions.substr(start + key.size());
}

bool isWhole(const Mount& mount, std::string_view fileSystemOptions) {
  if (mount.root == "/") return true;
  const std::string_view type = mount.fileSystemType;
  if (type == "btrfs") return mount.root == withoutOctalEscapes(subvolumeIn(fileSystemOptions));
  // Who mounts a directory of a network share names it as the source.
  if (type == "cifs" || type == "smb3") return mount.source.ends_with(mount.root);
  return false;
}

std::optional<Mount> parseLine(std::string_view line) {
  // id, parent, major:minor, root, mount point, options, any number of further fields, "-", type,
  // source, options of the file system
  const std::vector<std::string_view> fields = fieldsOf(line);
  if (fields.size() < 6) return std::nullopt;
  const auto separator = std::find(fields.begin() + 6, fields.end(), "-");
  if (fields.end() - separator < 3) return std::nullopt;
  Mount mount;
  const auto [end, error] =
      std::from_chars(fields[0].data(), fields[0].data() + fields[0].size(), mount.id);
  if (error != std::errc() || end != fields[0].data() + fields[0].size()) return std::nullopt;
  mount.mountPoint = withoutOctalEscapes(fields[4]);
  mount.root = withoutOctalEscapes(fields[3]);
  if (!mount.mountPoint.starts_with('/') || mount.mountPoint.contains('\0') || mount.root.empty()) {
    return std::nullopt;
  }
  mount.fileSystemType = separator[1];
  mount.source = withoutOctalEscapes(separator[2]);
  const bool hasOptions = fields.end() - separator > 3;
  mount.isVolume = !isPseudoFileSystem(mount.fileSystemType) &&
                   isWhole(mount, hasOptions ? separator[3] : std::string_view());
  return mount;
}

constexpr const char* tablePath = "/proc/self/mountinfo";

PlatformError unreadable(int code) {
  return {"read", FileURL(tablePath), code, "the mounts can't be told"};
}

/// All of an open table, from its beginning.
std::string textOf(const FileDescriptor& table) {
  if (lseek(table.get(), 0, SEEK_SET) != 0) throw unreadable(errno);
  auto text = readToEnd(table.get());
  if (!text) throw unreadable(text.error());
  // The root at least is always mounted.
  if (text->empty()) throw unreadable(EIO);
  return *std::move(text);
}

/// Whether the mounts have changed since the table was opened, or since this was last asked.
bool hasChanged(const FileDescriptor& table) {
  pollfd polled{.fd = table.get(), .events = POLLPRI, .revents = 0};
  return poll(&polled, 1, 0) != 0;
}

}  // namespace

Mounts MountTableReader::mounts() {
  const std::lock_guard lock(_mutex);
  if (!_table) _table = FileDescriptor(open(tablePath, O_RDONLY | O_CLOEXEC));
  if (!_table) throw unreadable(errno);
  // Asked before the reading: a change during it is then seen by the next call.
  if (hasChanged(_table)) _mounts.reset();
  if (!_mounts)
    _mounts = std::make_shared<const std::vector<Mount>>(parseMountTable(textOf(_table)));
  return _mounts;
}

std::vector<Mount> readMountTable() {
  return *MountTableReader().mounts();
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

}  // namespace tidemar
