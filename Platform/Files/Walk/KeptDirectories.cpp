#include "Platform/Files/Walk/KeptDirectories.h"

#include <string>
#include <vector>

#include <unistd.h>

#include "Platform/Files/Places/FixedPlaces.h"
#include "Platform/Files/Places/StandardDirectories.h"

namespace tidemar {

bool KeptDirectories::isFixed(const EntryValues& directory, std::string_view name) const {
  static const std::string binOfUser = ".Trash-" + std::to_string(geteuid());
  if (name == ".Trash" || name == binOfUser) return true;
  const DirectoryIdentity identity = identityOf(directory);
  return fixedPlaces.contains({identity.device, identity.inode});
}

std::set<std::pair<std::uint64_t, std::uint64_t>> identitiesOfFixedPlaces(AnsweringPaths& paths) {
  std::vector<FileURL> places = systemDirectoryURLs();
  places.push_back(StandardDirectories::home());
  std::set<std::pair<std::uint64_t, std::uint64_t>> identities;
  for (const FileURL& place : places) {
    if (const auto identity = paths.identityAt(place))
      identities.emplace(identity->device, identity->inode);
  }
  return identities;
}

}  // namespace tidemar
