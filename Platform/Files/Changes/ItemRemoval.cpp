#include "Platform/Files/Changes/ItemRemoval.h"

#include <cerrno>

#include "Platform/Files/Changes/GiveBack.h"
#include "Platform/Files/Changes/Obstacles.h"
#include "Platform/Files/OpenFolder.h"

namespace tidemar {

ItemRemoval::ItemRemoval(int folder, const KeptDirectories& kept)
    : _folder(folder),
      _kept(kept),
      _bin(folder),
      _deletion(folder, folder, kept, operationOf(Disposal::delete_)) {}

FileURL ItemRemoval::trash(const ItemState& item, const FileURL& url) {
  const FolderBin::Place place = _bin.take(item.name, url);
  if (isUnchanged(item, place.files, place.name, place.url, _kept) && _bin.isInPlace())
    return place.url;
  // One that can't go back has gone to the Bin after all, and is better told of than hidden.
  if (giveBack(place.files, place.name, _folder, item.name) != 0) return place.url;
  _bin.forget(place);
  throw ItemChanged(operationOf(Disposal::bin), url, ESTALE, "it changed meanwhile");
}

void ItemRemoval::remove(const ItemState& item, const FileURL& url) {
  _deletion.run(item, url);
}

}  // namespace tidemar
