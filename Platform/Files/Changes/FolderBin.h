#pragma once

#include <expected>
#include <optional>
#include <string>

#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/Trash/TrashDirectory.h"
#include "Platform/Files/Walk/FolderReading.h"
#include "Platform/Files/Walk/KeptDirectories.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// The Trash to which the items of one open folder go, by the freedesktop Trash specification 1.0:
/// the user's own where that is on the same file system, else that of the folder's mount. It is
/// opened once; if it is moved away or emptied as a whole meanwhile, it is opened anew. What lies
/// in a Trash is never replaced, and nothing is copied. For one thread.
class FolderBin {
 public:
  /// Both are borrowed.
  FolderBin(int folder, const KeptDirectories& kept) : _folder(folder), _kept(kept) {}

  /// Where an item came to lie.
  struct Place {
    int files;          ///< The open directory; valid until the next call of `take`.
    FolderReading* in;  ///< Reads it; valid as long.
    std::string name;   ///< Its name there.
    FileURL url;
    FileDescriptor record;  ///< Held, so that no other run takes it for one that was left.
  };

  /// Takes an entry out of the folder: makes its record, has that written to the disk, and then
  /// renames the entry. `url` is where it lies now. A record that a killed run left for this very
  /// item is taken over. On failure the entry is where it was and no record is left. Throws
  /// PlatformError.
  Place take(const std::string& name, const FileURL& url);

  /// Whether the Trash that the last `take` used still lies where it said. If not, an item there
  /// couldn't be found again, and the next `take` opens a Trash anew.
  bool isInPlace();

  /// Takes the record of an item that has left its place again.
  void forget(const Place& place);

 private:
  struct Opened {
    Opened(TrashDirectory opened, const KeptDirectories& kept);

    TrashDirectory trash;
    DirectoryIdentity identity;     ///< Of the Trash.
    FolderReading files;            ///< Of its `files`.
    std::optional<Timestamp> seen;  ///< The Trash's modification when all in it was in place.
    bool isLost = false;
  };

  Opened& opened(const FileURL& url);
  std::expected<Place, int> takeInto(Opened& bin, const std::string& name,
                                     const std::string& recordedPath) const;

  int _folder;
  const KeptDirectories& _kept;
  std::optional<DirectoryIdentity> _identity;  ///< Of the folder.
  std::optional<Opened> _bin;
  bool _isMountsTurn = false;  ///< The home's Trash can't be reached by a rename.
};

}  // namespace tidemar
