#include "Platform/Files/Walk/KeptDirectories.h"

#include <algorithm>
#include <string>
#include <vector>

#include <unistd.h>

#include "Platform/Files/Places/MountTable.h"
#include "Platform/Files/Places/StandardDirectories.h"
#include "Platform/Files/Places/SystemDirectories.h"

namespace tidemar {
namespace {

/// A mount that a server answers for, which may have gone. What lies on it is no part of an item in
/// another mount anyway.
bool isForeignMount(const FileURL& place, const std::vector<Mount>& mounts) {
  return std::ranges::any_of(mounts, [&](const Mount& mount) {
    return mount.mountPoint == place.path() && !mount.source.starts_with("/dev/");
  });
}

}  // namespace

bool KeptDirectories::isFixed(const EntryValues& directory, std::string_view name) const {
  static const std::string binOfUser = ".Trash-" + std::to_string(geteuid());
  if (name == ".Trash" || name == binOfUser) return true;
  const DirectoryIdentity identity = identityOf(directory);
  return fixedPlaces.contains({identity.device, identity.inode});
}

std::set<std::pair<std::uint64_t, std::uint64_t>> identitiesOfFixedPlaces() {
  std::vector<FileURL> places = systemDirectoryURLs();
  places.push_back(StandardDirectories::home());
  const std::vector<Mount> mounts = readMountTable();
  std::set<std::pair<std::uint64_t, std::uint64_t>> identities;
  for (const FileURL& place : places) {
    EntryValues values{};
    if (isForeignMount(place, mounts) || readValuesAt(place.path().c_str(), values) != 0) continue;
    const DirectoryIdentity identity = identityOf(values);
    identities.emplace(identity.device, identity.inode);
  }
  return identities;
}

}  // namespace tidemar
