#include "Platform/Files/Changes/PutBackByCopy.h"

#include <cerrno>
#include <ctime>
#include <exception>
#include <utility>

#include <unistd.h>

#include "Platform/Files/Changes/CopyComparison.h"
#include "Platform/Files/Changes/CopyItem.h"
#include "Platform/Files/Changes/LeftCopy.h"
#include "Platform/Files/Changes/PrivateDirectory.h"
#include "Platform/Files/Changes/TakenDeletion.h"
#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/Rename.h"
#include "Platform/Files/OpenFolder.h"
#include "Platform/Files/Trash/TrashPaths.h"
#include "Platform/Files/Walk/FolderReading.h"
#include "Platform/Files/Walk/Obstacles.h"
#include "Platform/Text.h"

namespace tidemar {
namespace {

/// How often to wait for the clock for files to pass the latest change, and for how long each time.
constexpr int mostWaits = 8;
constexpr timespec clockStep{.tv_sec = 0, .tv_nsec = 5'000'000};

constexpr const char* andIsCopied = "; a copy of it lies in the folder";

[[noreturn]] void failChanged(const FileURL& url) {
  throw ItemChanged(putBackOperation, url, ESTALE, "it changed meanwhile");
}

ItemState stateOf(int directory, const std::string& path, const FileURL& url,
                  Obstacles* obstacles = nullptr) {
  const KeptDirectories kept;
  const FileURL directoryURL = url.deletingLastPathComponent();
  FolderReading reading(directory, directoryURL, kept, HiddenNames::untold);
  return reading.readOne(path, false, nullptr, obstacles);
}

/// A change within the step of the clock in which the latest one fell would leave no trace.
void waitPast(Timestamp latestChange, const FileURL& url) {
  for (int waits = 0; latestChange >= clockOfFiles(); ++waits) {
    if (waits == mostWaits)
      throw PlatformError(putBackOperation, url, EAGAIN, "it has dates in the future");
    nanosleep(&clockStep, nullptr);
  }
}

/// The original as it is before the copy, if nothing speaks against its going afterwards.
ItemState lookAt(const FoundEntry& original) {
  EntryValues directory{};
  if (const int code = readEntryValues(original.directory, "", directory); code != 0)
    throw PlatformError(putBackOperation, original.url, code);
  Obstacles obstacles(holderOf(original.directory, directory), Disposal::delete_);
  ItemState item = stateOf(original.directory, original.name, original.url, &obstacles);
  if (item.root != original.identity) failChanged(original.url);
  if (obstacles.code() != 0) throw obstacleError(putBackOperation, original.url, obstacles.code());
  waitPast(item.latestChange, original.url);
  return item;
}

PrivateDirectory makeDirectory(int folder, const FileURL& url) {
  auto made = PrivateDirectory::make(folder, PrivateDirectory::Kind::copy);
  const int code = made ? made->makePlace(0) : made.error();
  if (code != 0) throw PlatformError(putBackOperation, url, code);
  return *std::move(made);
}

/// The whole item in a private directory of the folder; deleted unless it was brought to its place.
class Copy {
 public:
  Copy(int folder, const FileURL& url, const FileURL& target)
      : _folder(folder),
        _url(url),
        _name(target.lastPathComponent()),
        _path(PrivateDirectory::inPlace(0, _name)),
        _directory(makeDirectory(folder, url)) {}
  Copy(const Copy&) = delete;
  Copy& operator=(const Copy&) = delete;
  ~Copy() {
    try {
      deleteCopy(_directory);
    } catch (const std::exception&) {
      // The caller is told of another failure; what is left is swept at the next opening.
    }
  }

  void make(const FoundEntry& original, const ItemState& item) {
    copyItem(original.directory, original.name, _directory.descriptor(), _path, _url,
             putBackOperation);
    if (syncfs(_directory.descriptor()) != 0) throw PlatformError(putBackOperation, _url, errno);

    int code = compareWithCopy(original.directory, original.name, _directory.descriptor(), _path);
    const ItemState copy = stateOf(_directory.descriptor(), _path, _url);
    if (copy.tree.entries != item.tree.entries || !copy.tree.isComplete) code = ESTALE;
    // Looked at once more in the end, so that it didn't change while it was compared either.
    const ItemState present = stateOf(original.directory, original.name, _url);
    if (present.root != item.root || present.tree != item.tree) failChanged(_url);
    if (code == ESTALE)
      throw PlatformError(putBackOperation, _url, EIO, "its copy differs from it");
    if (code != 0) throw PlatformError(putBackOperation, _url, code);
    _identity = copy.root;
  }

  /// Answers 0 or an errno value, ESTALE if something else came to lie there.
  int bringToPlace() {
    const int code = renameWithoutReplacing(_directory.descriptor(), _path, _folder, _name);
    if (code != 0) return code;
    EntryValues values{};
    const int reading = readEntryValues(_folder, _name.c_str(), values);
    return reading == 0 && entryIdentity(values) == _identity ? 0 : ESTALE;
  }

 private:
  int _folder;
  const FileURL& _url;
  std::string _name;
  std::string _path;  ///< Of the copy, from the private directory.
  PrivateDirectory _directory;
  EntryIdentity _identity;
};

void deleteOriginal(const FoundEntry& original, const ItemState& item) try {
  const KeptDirectories kept;
  TakenDeletion(original.directory, original.trash, kept, putBackOperation).run(item, original.url);
} catch (const ItemChanged& error) {
  throw ItemChanged(putBackOperation, original.url, error.code(), error.reason() + andIsCopied);
} catch (const PlatformError& error) {
  throw PlatformError(putBackOperation, original.url, error.code(), error.reason() + andIsCopied);
}

}  // namespace

PlatformError placeError(const FileURL& item, const FileURL& target, int code) {
  if (code != EEXIST) return {putBackOperation, item, code};
  return {putBackOperation, item, code,
          "something else lies at “" + displayText(target.path()) + "” by now"};
}

void putBackByCopy(const FoundEntry& original, int folder, const FileURL& target) {
  EntryValues occupant{};
  if (readEntryValues(folder, std::string(target.lastPathComponent()).c_str(), occupant) == 0)
    throw placeError(original.url, target, EEXIST);
  const ItemState item = lookAt(original);
  Copy copy(folder, original.url, target);
  copy.make(original, item);
  placeOutsideTrash(folder, target.deletingLastPathComponent());
  const int placing = copy.bringToPlace();
  if (placing != 0) throw placeError(original.url, target, placing);

  // From here on the copy stays, and the original goes only if a loss of power can take neither it
  // nor its name.
  if (fsync(folder) != 0) throw PlatformError(putBackOperation, original.url, errno);
  placeOutsideTrash(folder, target.deletingLastPathComponent());
  deleteOriginal(original, item);
}

}  // namespace tidemar
