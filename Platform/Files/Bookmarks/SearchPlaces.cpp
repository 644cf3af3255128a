#include "Platform/Files/Bookmarks/SearchPlaces.h"

#include "Platform/Files/Places/StandardDirectories.h"
#include "Platform/Files/Places/UserDirectories.h"

namespace tidemar {

SearchPlaces::SearchPlaces(const FileURL& old)
    : _old(old), _mounts(readMountTable()), _paths(_mounts, old) {
  for (const Mount& mount : _mounts)
    _mountPoints.insert(mount.mountPoint);
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
    if (mount.source.starts_with("/dev/")) places.emplace_back(mount.mountPoint);
  }
  return places;
}

}  // namespace tidemar
