#include "Platform/Files/Changes/FolderBin.h"

#include <cerrno>
#include <ctime>
#include <string_view>

#include <unistd.h>

#include "Platform/Files/Changes/GiveBack.h"
#include "Platform/Files/Descriptors/DescriptorPath.h"
#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Descriptors/Rename.h"
#include "Platform/Files/Trash/TrashName.h"
#include "Platform/Files/Trash/TrashRecord.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

constexpr const char* operation = "move to the Bin";

[[noreturn]] void fail(const FileURL& url, int code) {
  if (code == EXDEV) {
    throw PlatformError(operation, url, code,
                        "the part of the drive it lies on has no Bin of its own");
  }
  throw PlatformError(operation, url, code);
}

DirectoryIdentity identityOfOpen(int directory, const FileURL& url) {
  EntryValues values{};
  if (const int code = readEntryValues(directory, "", values); code != 0) fail(url, code);
  return identityOf(values);
}

std::string pathInside(const FileURL& top, const FileURL& item) {
  if (top.path() == "/") return item.path().substr(1);
  if (!item.path().starts_with(top.path() + "/")) fail(item, ESTALE);
  return item.path().substr(top.path().size() + 1);
}

bool isInPlace(const TrashDirectory& trash) {
  return leadsTo(trash.filesURL, trash.files.get()) && leadsTo(trash.infoURL, trash.info.get());
}

/// Whether a record is one that a run left which was killed before its item came: that of this very
/// item, or one without content that a loss of power has made of it.
bool isLeftRecord(const TrashDirectory& trash, const std::string& name,
                  const std::string& recordedPath) {
  EntryValues values{};
  if (readEntryValues(trash.files.get(), name.c_str(), values) != ENOENT) return false;
  const std::string record = name + std::string(trashRecordEnding);
  if (readEntryValues(trash.info.get(), record.c_str(), values) != 0) return false;
  constexpr std::int64_t whileItIsWritten = 60;
  if (values.stx_size == 0)
    return changeTime(values).seconds + whileItIsWritten < clockOfFiles().seconds;
  return pathInTrashRecord(readTrashRecord(trash.info.get(), name).value_or("")) == recordedPath;
}

/// Makes the record of an item under a name, or takes over one that was left. Answers as
/// makeTrashRecord does.
int claimName(const TrashDirectory& trash, const std::string& name, const std::string& recordedPath,
              const std::string& record) {
  const int code = makeTrashRecord(trash.info.get(), name, record);
  if (code != EEXIST || !isLeftRecord(trash, name, recordedPath)) return code;
  removeTrashRecord(trash.info.get(), name);
  return makeTrashRecord(trash.info.get(), name, record);
}

}  // namespace

FolderBin::Place FolderBin::take(const std::string& name, const FileURL& url) {
  if (!_isMountsTurn) {
    const DirectoryIdentity folder = identityOfOpen(_folder, url);
    _isMountsTurn = homeTrashDevice() != folder.device;
    if (!_isMountsTurn) {
      const TrashDirectory& trash = homeTrash();
      const auto place = takeInto(trash, name, url.path());
      if (place) return *place;
      // One device can be mounted in several places, which a rename doesn't cross. Within one mount
      // another Trash would be as far away.
      if (place.error() != EXDEV || trash.mount == folder.mount) fail(url, place.error());
      _isMountsTurn = true;
    }
  }
  const TrashDirectory& trash = trashOfMount(url);
  const auto place = takeInto(trash, name, pathInside(_top, url));
  if (!place) fail(url, place.error());
  return *place;
}

bool FolderBin::isInPlace() const {
  return tidemar::isInPlace(_isMountsTurn ? *_mount : *_home);
}

void FolderBin::forget(const Place& place) {
  removeTrashRecord((_isMountsTurn ? *_mount : *_home).info.get(), place.name);
}

const TrashDirectory& FolderBin::homeTrash() {
  if (!_home || !tidemar::isInPlace(*_home)) {
    _home = openHomeTrash();
    giveBackAllLeft(_home->trash.get(), _home->files.get());
  }
  return *_home;
}

const TrashDirectory& FolderBin::trashOfMount(const FileURL& url) {
  if (_mount && tidemar::isInPlace(*_mount)) return *_mount;
  const FileDescriptor top = openMountRoot(_folder, url, operation);
  // A subvolume without a mount: file managers would never show a Trash inside it.
  if (identityOfOpen(top.get(), url).device != identityOfOpen(_folder, url).device)
    fail(url, EXDEV);
  _top = pathOfDescriptor(top.get(), url, operation);
  _mount = openTrashOfMount(top.get(), _top);
  giveBackAllLeft(_mount->trash.get(), _mount->files.get());
  return *_mount;
}

std::expected<FolderBin::Place, int> FolderBin::takeInto(const TrashDirectory& trash,
                                                         const std::string& itemName,
                                                         const std::string& recordedPath) {
  const std::string record = trashRecordText(recordedPath, std::time(nullptr));
  for (unsigned attempt = 0; attempt < trashNameAttempts; ++attempt) {
    const std::string name = trashName(itemName, attempt, trash.longestName);
    // The record claims the name; an item without a record may still lie under it.
    int code = claimName(trash, name, recordedPath, record);
    if (code == 0) {
      code = renameWithoutReplacing(_folder, itemName, trash.files.get(), name);
      if (code == 0)
        return Place{trash.files.get(), name, trash.filesURL.appendingPathComponent(name)};
      removeTrashRecord(trash.info.get(), name);
    }
    if (code != EEXIST) return std::unexpected(code);
  }
  return std::unexpected(EEXIST);
}

}  // namespace tidemar
