#include "Platform/Files/Places/AnsweringPaths.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <utility>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tidemar {
namespace {

/// As many as the kernel follows.
constexpr int mostLinks = 40;

bool answers(const Mount& mount) {
  // The source of a program's file system is whatever the program says.
  if (mount.fileSystemType.starts_with("fuse")) return false;
  return mount.source.starts_with("/dev/") || mount.fileSystemType == "tmpfs";
}

FileDescriptor openWithoutLinks(const std::string& path) {
  open_how how{};
  how.flags = O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC;
  how.resolve = RESOLVE_NO_SYMLINKS;
  return FileDescriptor(
      static_cast<int>(syscall(SYS_openat2, AT_FDCWD, path.c_str(), &how, sizeof how)));
}

}  // namespace

AnsweringPaths::AnsweringPaths(const std::vector<Mount>& mounts, const FileURL& touched) {
  for (const Mount& mount : mounts) {
    if (!answers(mount) && !leadsThrough(touched, mount.mountPoint))
      _forbidden.insert(mount.mountPoint);
  }
}

std::optional<DirectoryIdentity> AnsweringPaths::identityAt(const FileURL& place) {
  const auto path = withoutLinks(place);
  return path ? entryAt(*path).directory : std::nullopt;
}

FileDescriptor AnsweringPaths::open(const FileURL& directory) {
  const auto path = withoutLinks(directory);
  return path ? openWithoutLinks(*path) : FileDescriptor();
}

/// The path of the directory at a place; none where there is none or it can't be reached.
std::optional<std::string> AnsweringPaths::withoutLinks(const FileURL& place) {
  // Component by component, so that a link is looked at before it is followed.
  std::string path;
  std::string rest = place.path();
  for (int links = 0; !rest.empty() && links <= mostLinks;) {
    const std::size_t end = std::min(rest.find('/'), rest.size());
    const std::string name = rest.substr(0, end);
    rest.erase(0, end + 1);
    if (name.empty() || name == ".") continue;
    if (name == "..") {
      path.resize(std::min(path.rfind('/'), path.size()));
      continue;
    }
    std::string next = path;
    next.append("/").append(name);
    if (_forbidden.contains(next)) return std::nullopt;
    const Entry& entry = entryAt(next);
    if (entry.directory) {
      path = std::move(next);
      continue;
    }
    if (entry.target.empty()) return std::nullopt;
    ++links;
    rest.insert(0, entry.target + "/");
    if (rest.starts_with('/')) path.clear();
  }
  if (!rest.empty()) return std::nullopt;
  return path.empty() ? "/" : path;
}

const AnsweringPaths::Entry& AnsweringPaths::entryAt(const std::string& path) {
  const auto [place, isNew] = _met.try_emplace(path);
  Entry& entry = place->second;
  EntryValues values{};
  if (!isNew || readEntryValues(AT_FDCWD, path.c_str(), values) != 0) return entry;
  if (isDirectory(values)) entry.directory = identityOf(values);
  if (S_ISLNK(values.stx_mode)) {
    std::array<char, PATH_MAX> target{};
    const ssize_t size = readlink(path.c_str(), target.data(), target.size());
    if (size > 0) entry.target.assign(target.data(), static_cast<std::size_t>(size));
  }
  return entry;
}

bool leadsThrough(const FileURL& place, const std::string& directory) {
  return directory == "/" || (place.path() + "/").starts_with(directory + "/");
}

}  // namespace tidemar
