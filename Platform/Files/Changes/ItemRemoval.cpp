#include "Platform/Files/Changes/ItemRemoval.h"

#include <cerrno>
#include <utility>

#include "Platform/Files/Changes/Deletion.h"
#include "Platform/Files/Changes/GiveBack.h"
#include "Platform/Files/Changes/Obstacles.h"
#include "Platform/Files/Descriptors/DirectoryOpening.h"
#include "Platform/Files/Descriptors/Rename.h"
#include "Platform/Files/OpenFolder.h"
#include "Platform/Files/Walk/FolderReading.h"

namespace tidemar {
namespace {

[[noreturn]] void failChanged(Disposal disposal, const FileURL& url) {
  throw ItemChanged(operationOf(disposal), url, ESTALE, "it changed meanwhile");
}

/// Why an item couldn't be taken out of its place.
[[noreturn]] void failToTake(const FileURL& url, int code) {
  if (code != EXDEV) throw PlatformError("delete", url, code);
  throw PlatformError("delete", url, code, "the drive it lies on can't move it out of its place");
}

[[noreturn]] void fail(const FileURL& url, int code) {
  if (code == ESTALE) failChanged(Disposal::delete_, url);
  throw obstacleError(Disposal::delete_, url, code);
}

}  // namespace

FileURL ItemRemoval::trash(const ItemState& item, const FileURL& url) {
  const FolderBin::Place place = _bin.take(item.name, url);
  if (isUnchanged(item, place.files, place.name, place.url) && _bin.isInPlace()) return place.url;
  // One that can't go back has gone to the Bin after all, and is better told of than hidden.
  if (giveBack(place.files, place.name, _folder, item.name) != 0) return place.url;
  _bin.forget(place);
  failChanged(Disposal::bin, url);
}

void ItemRemoval::remove(const ItemState& item, const FileURL& url) {
  const int taking = takeForDeletion(item);
  // Without room for a rename it is deleted where it lies, entry by entry compared all the same.
  const bool isTaken = taking == 0;
  if (!isTaken && taking != ENOSPC && taking != EDQUOT) failToTake(url, taking);

  int code = isTaken ? checkTaken(item, url) : 0;
  if (code == 0) code = Deletion(isTaken ? &*_taken : nullptr, _folder, item).run();
  if (code == 0) return;
  if (isTaken) {
    const int returning =
        giveBack(_taken->descriptor(), PrivateDirectory::inPlace(0, item.name), _folder, item.name);
    if (returning != 0 && returning != ENOENT) {
      throw PlatformError("put back", url, returning,
                          "what is left of it comes back at the next opening of the folder");
    }
  }
  fail(url, code);
}

int ItemRemoval::checkTaken(const ItemState& item, const FileURL& url) const {
  FileDescriptor place;
  const int code = openDirectory(_taken->descriptor(), "0", place);
  if (code != 0) return code;
  return isUnchanged(item, place.get(), item.name, url) ? 0 : ESTALE;
}

/// Whether what was taken is what had been looked at, down to the last entry.
bool ItemRemoval::isUnchanged(const ItemState& item, int directory, const std::string& name,
                              const FileURL& url) const {
  try {
    const ItemState present = FolderReading(directory, url, _kept, HiddenNames::untold)
                                  .readOne(name, false, nullptr, nullptr);
    return present.root == item.root && present.tree == item.tree;
  } catch (const PlatformError&) {
    return false;  // What can't be read can't be told to be the same.
  }
}

int ItemRemoval::takeForDeletion(const ItemState& item) {
  if (!_taken) {
    auto made = PrivateDirectory::make(_folder, PrivateDirectory::Kind::taken);
    if (!made) return made.error();
    _taken.emplace(*std::move(made));
  }
  if (const int code = _taken->makePlace(0); code != 0) return code;
  return renameWithoutReplacing(_folder, item.name, _taken->descriptor(),
                                PrivateDirectory::inPlace(0, item.name));
}

}  // namespace tidemar
