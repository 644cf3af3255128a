#include "Platform/Files/Walk/KeptDirectories.h"

#include <string>
#include <vector>

#include <unistd.h>

#include "Platform/Files/Places/AnsweringPaths.h"
#include "Platform/Files/Places/StandardDirectories.h"
#include "Platform/Files/Places/SystemDirectories.h"

namespace tidemar {
bool KeptDirectories::isFixed(const EntryValues& directory, std::string_view name) const {
  static const std::string binOfUser = ".Trash-" + std::to_string(geteuid());
  if (name == ".Trash" || name == binOfUser) return true;
  const DirectoryIdentity identity = identityOf(directory);
  return fixedPlaces.contains({identity.device, identity.inode});
}

std::set<std::pair<std::uint64_t, std::uint64_t>> identitiesOfFixedPlaces(
    const std::vector<Mount>& mounts, const FileURL& folder) {
  std::vector<FileURL> places = systemDirectoryURLs();
  places.push_back(StandardDirectories::home());
  const AnsweringPaths paths(mounts, folder);
  std::set<std::pair<std::uint64_t, std::uint64_t>> identities;
  for (const FileURL& place : places) {
    const FileDescriptor directory = paths.open(place);
    EntryValues values{};
    if (!directory || readEntryValues(directory.get(), "", values) != 0) continue;
    const DirectoryIdentity identity = identityOf(values);
    identities.emplace(identity.device, identity.inode);
  }
  return identities;
}

}  // namespace tidemar
