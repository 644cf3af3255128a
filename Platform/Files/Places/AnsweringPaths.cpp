#include "Platform/Files/Places/AnsweringPaths.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstddef>

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

FileDescriptor AnsweringPaths::open(const FileURL& directory) const {
  // Component by component, so that a link is looked at before it is followed.
  std::string path;
  std::string rest = directory.path();
  for (int links = 0; !rest.empty() && links <= mostLinks;) {
    const std::size_t end = std::min(rest.find('/'), rest.size());
    const std::string name = rest.substr(0, end);
    rest.erase(0, end + 1);
    if (name.empty() || name == ".") continue;
    if (name == "..") {
      path.resize(std::min(path.rfind('/'), path.size()));
      continue;
    }
    const std::string next = path + "/" + name;
    if (_forbidden.contains(next)) return {};
    std::array<char, PATH_MAX> target{};
    const ssize_t size = readlink(next.c_str(), target.data(), target.size());
    if (size < 0) {
      if (errno != EINVAL) return {};
      path = next;  // It is no link.
      continue;
    }
    ++links;
    rest.insert(0, std::string(target.data(), static_cast<std::size_t>(size)) + "/");
    if (rest.starts_with('/')) path.clear();
  }
  return rest.empty() ? openWithoutLinks(path.empty() ? "/" : path) : FileDescriptor();
}

bool leadsThrough(const FileURL& place, const std::string& directory) {
  return directory == "/" || (place.path() + "/").starts_with(directory + "/");
}

}  // namespace tidemar
