#pragma once

#include <optional>
#include <string>

#include "Platform/Files/Changes/PrivateDirectory.h"
#include "Platform/Files/ItemState.h"
#include "Platform/Files/Trash/FolderBin.h"
#include "Platform/Files/Walk/KeptDirectories.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Takes items out of one open folder, in three steps each: take, check, finish. The item is taken
/// out of its place by one rename that replaces nothing; what was taken is compared with what had
/// been looked at; only then is it let go, or else given back. Holds what a run needs again and
/// again. For one thread.
class ItemRemoval {
 public:
  /// `folder` and `kept` are borrowed.
  ItemRemoval(int folder, const KeptDirectories& kept)
      : _folder(folder), _kept(kept), _bin(folder) {}

  /// See OpenFolder::trashItem. `url` is where the item lies now.
  FileURL trash(const ItemState& item, const FileURL& url);

  /// See OpenFolder::removeItem.
  void remove(const ItemState& item, const FileURL& url);

 private:
  bool isUnchanged(const ItemState& item, int directory, const std::string& name,
                   const FileURL& url) const;
  int takeForDeletion(const ItemState& item);
  int checkTaken(const ItemState& item, const FileURL& url) const;

  int _folder;
  const KeptDirectories& _kept;
  FolderBin _bin;
  std::optional<PrivateDirectory> _taken;  ///< Made when the first item is to be deleted.
};

}  // namespace tidemar
