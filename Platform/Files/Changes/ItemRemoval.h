#pragma once

#include "Platform/Files/Changes/FolderBin.h"
#include "Platform/Files/Changes/TakenDeletion.h"
#include "Platform/Files/ItemState.h"
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
  ItemRemoval(int folder, const KeptDirectories& kept);

  /// See OpenFolder::trashItem. `url` is where the item lies now.
  FileURL trash(const ItemState& item, const FileURL& url);

  /// See OpenFolder::removeItem.
  void remove(const ItemState& item, const FileURL& url);

 private:
  int _folder;
  FolderBin _bin;
  TakenDeletion _deletion;
};

}  // namespace tidemar
