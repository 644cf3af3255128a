#include "Platform/Files/Changes/ItemRemoval.h"

#include <cerrno>

#include "Platform/Files/Changes/GiveBack.h"
#include "Platform/Files/OpenFolder.h"
#include "Platform/Files/Walk/Obstacles.h"

namespace tidemar {
namespace {

/// A Bin that is moved away time and again isn't followed for ever.
constexpr int mostAttempts = 3;

}  // namespace

ItemRemoval::ItemRemoval(int folder, const KeptDirectories& kept)
    : _folder(folder),
      _bin(folder, kept),
      _deletion(folder, folder, kept, operationOf(Disposal::delete_)) {}

FileURL ItemRemoval::trash(const ItemState& item, const FileURL& url) {
  for (int attempt = 0;; ++attempt) {
    const FolderBin::Place place = _bin.take(item.name, url);
    const bool isSame = place.in->isUnchanged(place.name, item);
    const bool isInPlace = _bin.isInPlace();
    if (isSame && isInPlace) return place.url;
    // One that can't go back has gone to the Bin after all, and is better told of than hidden.
    if (giveBack(place.files, place.name, _folder, item.name) != 0) return place.url;
    _bin.forget(place);
    // If the Bin alone was moved away, there is another one for the next attempt.
    if (!isSame || attempt == mostAttempts)
      throw ItemChanged(operationOf(Disposal::bin), url, ESTALE, "it changed meanwhile");
  }
}

void ItemRemoval::remove(const ItemState& item, const FileURL& url) {
  _deletion.run(item, url);
}

}  // namespace tidemar
