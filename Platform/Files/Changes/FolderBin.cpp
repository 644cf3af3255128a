#include "Platform/Files/Changes/FolderBin.h"

#include <cerrno>
#include <ctime>
#include <utility>

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

/// A Trash that is moved away time and again isn't followed for ever.
constexpr int mostAttempts = 3;

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

/// Whether a record that nobody is at work with is one that a run left which was killed before its
/// item came: that of this very item, or one without content that a loss of power has made of it.
bool isLeft(const HeldRecord& record, const TrashDirectory& trash, const std::string& name,
            const std::string& recordedPath) {
  EntryValues values{};
  if (readEntryValues(trash.files.get(), name.c_str(), values) != ENOENT) return false;
  if (!record.text.empty()) return pathInTrashRecord(record.text) == recordedPath;
  constexpr std::int64_t whileItIsWritten = 60;
  return readEntryValues(record.file.get(), "", values) == 0 &&
         changeTime(values).seconds + whileItIsWritten < clockOfFiles().seconds;
}

/// Makes the record of an item under a name, or takes over one that was left. Answers as
/// makeTrashRecord does.
std::expected<FileDescriptor, int> claimName(const TrashDirectory& trash, const std::string& name,
                                             const std::string& recordedPath,
                                             const std::string& record) {
  auto made = makeTrashRecord(trash.info.get(), name, record);
  if (made || made.error() != EEXIST) return made;
  const auto there = holdTrashRecord(trash.info.get(), name);
  if (!there || !isLeft(*there, trash, name, recordedPath)) return made;
  removeTrashRecord(trash.info.get(), name);
  return makeTrashRecord(trash.info.get(), name, record);
}

/// The Trash at the top of the mount on which an open folder lies.
TrashDirectory openTrashAbove(int folder, const DirectoryIdentity& identity, const FileURL& url) {
  const FileDescriptor top = openMountRoot(folder, url, operation);
  // A subvolume without a mount: file managers would never show a Trash inside it.
  if (identityOfOpen(top.get(), url).device != identity.device) fail(url, EXDEV);
  return openTrashOfMount(top.get(), pathOfDescriptor(top.get(), url, operation));
}

}  // namespace

FolderBin::Opened::Opened(TrashDirectory opened, const KeptDirectories& kept)
    : trash(std::move(opened)),
      identity(identityOfOpen(trash.trash.get(), trash.url)),
      files(trash.files.get(), trash.filesURL, kept, HiddenNames::untold) {}

FolderBin::Place FolderBin::take(const std::string& name, const FileURL& url) {
  for (int attempt = 0;; ++attempt) {
    Opened& bin = opened(url);
    const std::string path = _isMountsTurn ? pathInside(bin.trash.topURL, url) : url.path();
    auto place = takeInto(bin, name, path);
    if (place) return *std::move(place);
    // One device can be mounted in several places, which a rename doesn't cross. Within one mount
    // another Trash would be as far away.
    if (place.error() == EXDEV && !_isMountsTurn && bin.trash.mount != _identity->mount) {
      _isMountsTurn = true;
      _bin.reset();
    } else if (isInPlace() || attempt == mostAttempts) {
      fail(url, place.error());
    }
  }
}

bool FolderBin::isInPlace() {
  const TrashDirectory& trash = _bin->trash;
  const Timestamp now = clockOfFiles();
  EntryValues there{};
  _bin->isLost =
      readValuesAt(trash.url.path().c_str(), there) != 0 || identityOf(there) != _bin->identity;
  // Whatever comes, goes or is renamed in the Trash moves its modification.
  const Timestamp modified = modificationTime(there);
  if (_bin->isLost || modified == _bin->seen) return !_bin->isLost;
  _bin->isLost =
      !leadsTo(trash.filesURL, trash.files.get()) || !leadsTo(trash.infoURL, trash.info.get());
  // Another change within the same step of the clock would leave no trace.
  if (modified < now) _bin->seen = modified;
  return !_bin->isLost;
}

void FolderBin::forget(const Place& place) {
  removeTrashRecord(_bin->trash.info.get(), place.name);
}

FolderBin::Opened& FolderBin::opened(const FileURL& url) {
  if (_bin && !_bin->isLost) return *_bin;
  if (!_identity) _identity = identityOfOpen(_folder, url);
  if (!_isMountsTurn) _isMountsTurn = homeTrashDevice() != _identity->device;
  _bin.emplace(_isMountsTurn ? openTrashAbove(_folder, *_identity, url) : openHomeTrash(), _kept);
  giveBackAllLeft(_bin->trash.trash.get(), _bin->trash.files.get());
  return *_bin;
}

std::expected<FolderBin::Place, int> FolderBin::takeInto(Opened& bin, const std::string& itemName,
                                                         const std::string& recordedPath) const {
  const TrashDirectory& trash = bin.trash;
  const std::string record = trashRecordText(recordedPath, std::time(nullptr));
  for (unsigned attempt = 0; attempt < trashNameAttempts; ++attempt) {
    const std::string name = trashName(itemName, attempt, trash.longestName);
    // The record claims the name; an item without a record may still lie under it.
    auto claimed = claimName(trash, name, recordedPath, record);
    int code = claimed ? 0 : claimed.error();
    if (claimed) {
      code = renameWithoutReplacing(_folder, itemName, trash.files.get(), name);
      if (code == 0) {
        return Place{trash.files.get(), &bin.files, name,
                     trash.filesURL.appendingPathComponent(name), *std::move(claimed)};
      }
      removeTrashRecord(trash.info.get(), name);
    }
    if (code != EEXIST) return std::unexpected(code);
  }
  return std::unexpected(EEXIST);
}

}  // namespace tidemar
