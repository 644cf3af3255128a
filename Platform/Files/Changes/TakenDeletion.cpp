#include "Platform/Files/Changes/TakenDeletion.h"

#include <cerrno>
#include <utility>

#include "Platform/Files/Changes/Deletion.h"
#include "Platform/Files/Changes/GiveBack.h"
#include "Platform/Files/Descriptors/Rename.h"
#include "Platform/Files/OpenFolder.h"
#include "Platform/Files/Walk/Obstacles.h"

namespace tidemar {

void TakenDeletion::run(const ItemState& item, const FileURL& url) {
  const int taking = take(item, url);
  const bool isTaken = taking == 0;
  if (!isTaken && taking != ENOSPC && taking != EDQUOT) failToTake(url, taking);

  const std::string path = PrivateDirectory::inPlace(0, item.name);
  Deletion deletion(isTaken ? &*_taken : nullptr, _directory, item);
  int code = !isTaken || _reading->isUnchanged(path, item) ? 0 : ESTALE;
  if (code == 0) code = deletion.run();
  if (code == 0) return;
  if (isTaken) {
    int returning = deletion.returning();
    if (returning == 0) {
      returning = giveBack(_taken->descriptor(), path, _directory, item.name);
      // Whoever took it away meanwhile has it.
      if (returning == ENOENT) returning = 0;
    }
    if (returning != 0) {
      // The next item has places of its own.
      _reading.reset();
      _taken.reset();
      throw PlatformError("put back", url, returning,
                          "what is left of it comes back at the next opening of the folder");
    }
  }
  fail(url, code);
}

int TakenDeletion::take(const ItemState& item, const FileURL& url) {
  if (!_taken) {
    auto made = PrivateDirectory::make(_above, PrivateDirectory::Kind::taken);
    if (!made) return made.error();
    _taken.emplace(*std::move(made));
    _reading.emplace(_taken->descriptor(), url.deletingLastPathComponent(), _kept,
                     HiddenNames::untold);
  }
  if (const int code = _taken->makePlace(0); code != 0) return code;
  return renameWithoutReplacing(_directory, item.name, _taken->descriptor(),
                                PrivateDirectory::inPlace(0, item.name));
}

/// Why an entry couldn't be taken out of its place.
void TakenDeletion::failToTake(const FileURL& url, int code) const {
  if (code != EXDEV) throw PlatformError(_operation, url, code);
  throw PlatformError(_operation, url, code, "the drive it lies on can't move it out of its place");
}

void TakenDeletion::fail(const FileURL& url, int code) const {
  if (code == ESTALE) throw ItemChanged(_operation, url, code, "it changed meanwhile");
  throw obstacleError(_operation, url, code);
}

}  // namespace tidemar
