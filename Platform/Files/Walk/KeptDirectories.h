#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Places/AnsweringPaths.h"

namespace tidemar {

using InodeSet = std::unordered_set<std::uint64_t>;

/// Directories that mustn't go with an item that they lie in, told by what they are and not by a
/// path.
struct KeptDirectories {
  /// Device and inode of the home and the other places that are never cleared.
  std::set<std::pair<std::uint64_t, std::uint64_t>> fixedPlaces;

  // Of the folders that the program knows; none of them leaves out the first.
  std::shared_ptr<const InodeSet> rememberedInodes;
  InodeSet inodesAtPlaces;

  /// Whether a directory never goes: one of the fixed places, or by its name the user's Bin at the
  /// top of a drive.
  bool isFixed(const EntryValues& directory, std::string_view name) const;

  bool mayBeKnown(const EntryValues& directory) const {
    return (rememberedInodes && rememberedInodes->contains(directory.stx_ino)) ||
           inodesAtPlaces.contains(directory.stx_ino);
  }
};

/// The fixed places by the paths around a folder: the home and `systemDirectoryURLs`. One that
/// isn't there, or can't be reached without touching a mount that may never answer, is left out:
/// what lies on another mount than the folder is no part of an item there.
std::set<std::pair<std::uint64_t, std::uint64_t>> identitiesOfFixedPlaces(AnsweringPaths& paths);

}  // namespace tidemar
