#include "Platform/Files/Bookmarks/SearchPlaces.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstddef>

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "Platform/Files/Places/StandardDirectories.h"
#include "Platform/Files/Places/UserDirectories.h"

namespace tidemar {
namespace {

/// As many as the kernel follows.
constexpr int mostLinks = 40;

bool leadsThrough(const FileURL& path, const std::string& directory) {
  return directory == "/" || (path.path() + "/").starts_with(directory + "/");
}

FileDescriptor openWithoutLinks(const std::string& path) {
  open_how how{};
  how.flags = O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC;
  how.resolve = RESOLVE_NO_SYMLINKS;
  return FileDescriptor(
      static_cast<int>(syscall(SYS_openat2, AT_FDCWD, path.c_str(), &how, sizeof how)));
}

}  // namespace

SearchPlaces::SearchPlaces(const FileURL& old) : _old(old), _mounts(readMountTable()) {
  for (const Mount& mount : _mounts) {
    _mountPoints.insert(mount.mountPoint);
    if (!mayBeTouched(mount)) _forbidden.insert(mount.mountPoint);
  }
}

bool SearchPlaces::mayBeTouched(const Mount& mount) const {
  if (leadsThrough(_old, mount.mountPoint)) return true;
  // The source of a program's file system is whatever the program says.
  if (mount.fileSystemType.starts_with("fuse")) return false;
  return mount.source.starts_with("/dev/") || mount.fileSystemType == "tmpfs";
}

std::vector<FileURL> SearchPlaces::near() const {
  std::vector<FileURL> places;
  for (FileURL url = _old; url.path() != "/" && places.size() < 2;) {
    url = url.deletingLastPathComponent();
    if (open(url)) places.push_back(url);
  }
  for (const UserDirectory& directory : userDirectories())
    places.push_back(directory.url);
  places.push_back(StandardDirectories::home());
  return places;
}

std::vector<FileURL> SearchPlaces::far() const {
  std::string above = "/";
  for (const Mount& mount : _mounts) {
    const bool isNearer = mount.mountPoint.size() > above.size();
    if (isNearer && leadsThrough(_old, mount.mountPoint)) above = mount.mountPoint;
  }
  std::vector<FileURL> places = {FileURL(above)};
  for (const Mount& mount : _mounts) {
    if (mount.source.starts_with("/dev/") && mayBeTouched(mount)) {
      places.emplace_back(mount.mountPoint);
    }
  }
  return places;
}

FileDescriptor SearchPlaces::open(const FileURL& directory) const {
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

}  // namespace tidemar
