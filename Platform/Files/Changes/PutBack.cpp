#include "Platform/Files/Changes/PutBack.h"

#include <cerrno>
#include <optional>
#include <utility>

#include "Platform/Files/Changes/GiveBack.h"
#include "Platform/Files/Changes/PutBackByCopy.h"
#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/Rename.h"
#include "Platform/Files/Trash/TrashDirectory.h"
#include "Platform/Files/Trash/TrashPaths.h"
#include "Platform/Files/Trash/TrashRecord.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

/// Whether a path of the journal can be that of an item: it goes down from the root, and no part of
/// it is cut off or leads up again.
bool isPlainPath(const std::string& path) {
  return path.starts_with('/') && path.find('\0') == path.npos &&
         (path + "/").find("/../") == path.npos;
}

/// Whether a record tells of an item that went from this open folder under this name. Where nothing
/// lies at the recorded place of the folder, it was moved since, and the name has to do.
bool isRecordOf(const TrashDirectory& trash, const std::string& recordedPath,
                const std::string& name, int folder) {
  const FileURL recorded(recordedPath.starts_with('/') ? recordedPath
                                                       : trash.topURL.path() + "/" + recordedPath);
  if (recorded.lastPathComponent() != name) return false;
  const FileURL recordedFolder = recorded.deletingLastPathComponent();
  EntryValues found{};
  const int code = readValuesAt(recordedFolder.path().c_str(), found);
  if (code == ENOENT || code == ENOTDIR || code == ENAMETOOLONG) return true;
  if (code != 0) throw PlatformError(putBackOperation, recordedFolder, code);
  EntryValues own{};
  const int ownCode = readEntryValues(folder, "", own);
  if (ownCode != 0) throw PlatformError(putBackOperation, recordedFolder, ownCode);
  return isSameDirectory(found, own);
}

class DiskBinnedItem : public BinnedItem {
 public:
  DiskBinnedItem(TrashDirectory trash, FoundEntry item, Timestamp changed, std::string record,
                 int folder, FileURL target)
      : _trash(std::move(trash)),
        _item(std::move(item)),
        _changed(changed),
        _record(std::move(record)),
        _folder(folder),
        _target(std::move(target)),
        _name(_target.lastPathComponent()) {}

  void putBack() override {
    EntryValues values{};
    const int reading = readEntryValues(_item.directory, _item.name.c_str(), values);
    if (reading != 0) throw PlatformError(putBackOperation, _item.url, reading);
    if (entryIdentity(values) != _item.identity || changeTime(values) != _changed) failChanged();

    const int code = renameWithoutReplacing(_item.directory, _item.name, _folder, _name);
    if (code == EXDEV) {
      putBackByCopy(_item, _folder, _target);
    } else if (code != 0) {
      throw placeError(_item.url, _target, code);
    } else {
      checkWhatCame();
    }
    // What was saved over it in the Bin meanwhile lies there under the same record.
    if (readEntryValues(_item.directory, _item.name.c_str(), values) == ENOENT)
      forgetTrashedItem(_trash.trash.get(), _trash.info.get(), _item.name, _record);
  }

 private:
  [[noreturn]] void failChanged() const {
    throw ItemChanged(putBackOperation, _item.url, ESTALE, "it changed meanwhile");
  }

  /// Something else may have come to lie at its place just before the rename, and the folder may
  /// have gone to the Bin: then what came goes where it was.
  void checkWhatCame() const {
    EntryValues values{};
    const int reading = readEntryValues(_folder, _name.c_str(), values);
    const bool isSame = reading == 0 && entryIdentity(values) == _item.identity;
    try {
      placeOutsideTrash(_folder, _target.deletingLastPathComponent());
      if (isSame) return;
    } catch (const PlatformError&) {
      giveBackToTrash();
      throw;
    }
    giveBackToTrash();
    failChanged();
  }

  void giveBackToTrash() const {
    const int code = renameWithoutReplacing(_folder, _name, _item.directory, _item.name);
    if (code == 0) return;
    throw PlatformError(putBackOperation, _item.url, code,
                        "what came can't go back into the Bin, and lies in the folder now");
  }

  TrashDirectory _trash;
  FoundEntry _item;
  Timestamp _changed;
  std::string _record;
  int _folder;
  FileURL _target;
  std::string _name;
};

}  // namespace

std::unique_ptr<BinnedItem> openBinnedItem(const FileURL& place, const std::string& name,
                                           int folder, const FileURL& folderURL) {
  const std::string binnedName(place.lastPathComponent());
  if (!isPlainPath(place.path()) || !isEntryName(binnedName) || !isEntryName(name)) return nullptr;
  placeOutsideTrash(folder, folderURL);
  std::optional<TrashDirectory> trash = findTrash(place.deletingLastPathComponent());
  if (!trash) return nullptr;
  giveBackAllLeft(trash->trash.get(), trash->files.get());

  EntryValues values{};
  const int code = readEntryValues(trash->files.get(), binnedName.c_str(), values);
  if (code == ENOENT || code == ENAMETOOLONG) return nullptr;
  if (code != 0) throw PlatformError(putBackOperation, place, code);
  auto record = readTrashRecord(trash->info.get(), binnedName);
  if (!record) throw PlatformError(putBackOperation, place, record.error());
  const auto path = pathInTrashRecord(*record);
  if (!path || !isRecordOf(*trash, *path, name, folder)) return nullptr;

  FoundEntry item{trash->trash.get(), trash->files.get(), binnedName, entryIdentity(values), place};
  return std::make_unique<DiskBinnedItem>(*std::move(trash), std::move(item), changeTime(values),
                                          *std::move(record), folder,
                                          folderURL.appendingPathComponent(name));
}

}  // namespace tidemar
