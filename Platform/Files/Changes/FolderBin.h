#pragma once

#include <expected>
#include <optional>
#include <string>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Files/Trash/TrashDirectory.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// The Trash to which the items of one open folder go, by the freedesktop Trash specification 1.0:
/// the user's own where that is on the same file system, else that of the folder's mount. It is
/// opened once; if it is moved away or emptied as a whole meanwhile, it is opened anew. What lies
/// in a Trash is never replaced, and nothing is copied. For one thread.
class FolderBin {
 public:
  /// `folder` is borrowed.
  explicit FolderBin(int folder) : _folder(folder) {}

  /// Where an item came to lie.
  struct Place {
    int files;         ///< The open directory; valid until the next call of `take`.
    std::string name;  ///< Its name there.
    FileURL url;
  };

  /// Takes an entry out of the folder: makes its record, has that written to the disk, and then
  /// renames the entry. `url` is where it lies now. A record that a killed run left for this very
  /// item is taken over. On failure the entry is where it was and no record is left. Throws
  /// PlatformError.
  Place take(const std::string& name, const FileURL& url);

  /// Whether the Trash that the last `take` used still lies where it said. If not, an item there
  /// couldn't be found again.
  bool isInPlace() const;

  /// Takes the record of an item that has left its place again.
  void forget(const Place& place);

 private:
  const TrashDirectory& homeTrash();
  const TrashDirectory& trashOfMount(const FileURL& url);
  std::expected<Place, int> takeInto(const TrashDirectory& trash, const std::string& name,
                                     const std::string& recordedPath);

  int _folder;
  std::optional<TrashDirectory> _home;  ///< Not there until it is needed, as the other.
  std::optional<TrashDirectory> _mount;
  FileURL _top;                ///< Of the mount.
  bool _isMountsTurn = false;  ///< The home's Trash can't be reached by a rename.
};

}  // namespace tidemar
