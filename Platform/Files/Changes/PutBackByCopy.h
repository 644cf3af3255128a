#pragma once

#include <string>

#include "Platform/Files/ItemState.h"
#include "Platform/PlatformError.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// An item of an open Trash as it was found.
struct FoundEntry {
  int trash;      ///< The Trash's directory. Borrowed, as the next.
  int directory;  ///< Its directory `files`.
  std::string name;
  EntryIdentity identity;
  FileURL url;  ///< Where it lies.
};

/// The verb of the sentences about a put-back.
inline constexpr const char* putBackOperation = "put back";

/// Why an item could not be brought to its place.
PlatformError placeError(const FileURL& item, const FileURL& target, int code);

/// Moves an item to a name in an open folder on another file system, where nothing lies yet: copies
/// it with all its metadata into a private directory of that folder, has the copy written to the
/// disk, compares it, brings it to its place in one step, and only then takes the original into a
/// private directory of the Trash and deletes it, entry by entry and none that changed meanwhile.
/// What holds a mount or a subvolume, is being written to or couldn't be deleted afterwards is
/// refused before anything is copied.
///
/// Throws PlatformError, ItemChanged where the original changed. Then the original is where it was
/// and nothing is at the new place, but for what fails behind that one step (the folder can't be
/// written to the disk or has gone to the Bin, or the original can't be deleted): then the copy is
/// in its place and the original, or what is left of it, is where it was.
void putBackByCopy(const FoundEntry& original, int folder, const FileURL& target);

}  // namespace tidemar
