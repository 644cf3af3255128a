#pragma once

#include <cstdint>
#include <set>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Places/MountTable.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Directories that mustn't go with an item that they lie in, told by what they are and not by a
/// path.
struct KeptDirectories {
  /// Device and inode of the home and the other places that are never cleared.
  std::set<std::pair<std::uint64_t, std::uint64_t>> fixedPlaces;

  /// Inode numbers of the other folders that the program knows.
  std::unordered_set<std::uint64_t> knownFolders;

  /// Whether a directory never goes: one of the fixed places, or by its name the user's Bin at the
  /// top of a drive.
  bool isFixed(const EntryValues& directory, std::string_view name) const;

  bool mayBeKnown(const EntryValues& directory) const {
    return !knownFolders.empty() && knownFolders.contains(directory.stx_ino);
  }
};

/// The fixed places as they lie now: the home and `systemDirectoryURLs`. One that isn't there, or
/// can't be reached without touching a mount that may never answer, is left out: what lies on
/// another mount than `folder` is no part of an item there.
std::set<std::pair<std::uint64_t, std::uint64_t>> identitiesOfFixedPlaces(
    const std::vector<Mount>& mounts, const FileURL& folder);

}  // namespace tidemar
