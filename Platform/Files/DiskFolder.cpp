#include "Platform/Files/DiskFolder.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <system_error>
#include <utility>

#include "Platform/Files/Bookmarks/Bookmark.h"
#include "Platform/Files/Bookmarks/BookmarkRecord.h"
#include "Platform/Files/Changes/GiveBack.h"
#include "Platform/Files/Changes/LeftCopy.h"
#include "Platform/Files/Changes/PutBack.h"
#include "Platform/Files/Descriptors/DescriptorPath.h"
#include "Platform/Files/Places/AnsweringPaths.h"
#include "Platform/Files/Places/Volumes.h"
#include "Platform/Files/Tags.h"
#include "Platform/Files/Trash/TrashPaths.h"
#include "Platform/Files/Walk/Obstacles.h"

namespace tidemar {
namespace {

constexpr const char* readOperation = "read";

/// How often a look waits for the clock to pass an item's last change. The clock for files moves in
/// steps of a few milliseconds.
constexpr int mostWaits = 8;
constexpr timespec clockStep{.tv_sec = 0, .tv_nsec = 5'000'000};

EntryValues valuesOf(const FileDescriptor& directory, const FileURL& url) {
  EntryValues values{};
  if (const int code = readEntryValues(directory.get(), "", values); code != 0)
    throw PlatformError(readOperation, url, code);
  return values;
}

bool isLeft(std::string_view name) {
  return PrivateDirectory::isName(name, PrivateDirectory::Kind::taken) ||
         PrivateDirectory::isName(name, PrivateDirectory::Kind::copy);
}

}  // namespace

DiskFolder::DiskFolder(FileDescriptor directory, FileURL url,
                       std::shared_ptr<MountTableReader> mounts)
    : _directory(std::move(directory)), _url(std::move(url)), _mounts(std::move(mounts)) {}

std::string DiskFolder::bookmarkData() const {
  return makeBookmark(_directory.get(), _url);
}

bool DiskFolder::isRememberedBy(std::string_view bookmark) const {
  return isBookmarkOf(bookmark, _directory.get(), _url);
}

bool DiskFolder::isOneOf(std::span<const FileURL> places) const {
  const EntryValues values = valuesOf(_directory, _url);
  const DirectoryIdentity own = identityOf(values);
  const bool isMountRoot = (values.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
  auto& [mounts, paths] = surroundings();
  return std::ranges::any_of(places, [&](const FileURL& place) {
    const std::string path = place.path();
    bool isMountPoint = false;
    for (const Mount& mount : *mounts) {
      if (mount.mountPoint != path) continue;
      if (isMountRoot && mount.id == own.mount) return true;
      isMountPoint = true;
    }
    if (isMountPoint) return false;
    const std::optional<DirectoryIdentity> there = paths.identityAt(place);
    return there && there->device == own.device && there->inode == own.inode;
  });
}

DiskFolder::Surroundings& DiskFolder::surroundings() const {
  if (!_surroundings) {
    Mounts mounts = _mounts->mounts();
    AnsweringPaths paths(*mounts, _url);
    _surroundings.emplace(std::move(mounts), std::move(paths));
  }
  return *_surroundings;
}

VolumeCapacity DiskFolder::volumeCapacity() const {
  return readVolumeCapacity(_directory.get(), _url);
}

std::vector<std::string> DiskFolder::tagNames() const {
  return readTagNames(_directory.get(), _url);
}

void DiskFolder::setTagNames(std::span<const std::string> tags) {
  writeTagNames(_directory.get(), _url, tags);
}

void DiskFolder::setKnownFolders(std::shared_ptr<const KnownFolders> known) {
  _known = std::move(known);
}

void DiskFolder::giveBackTaken() {
  std::vector<std::string> left;
  try {
    DirectoryReader reader;
    lseek(_directory.get(), 0, SEEK_SET);
    reader.start(_directory.get());
    while (const auto entry = reader.next()) {
      if (isLeft(entry->name)) left.emplace_back(entry->name);
    }
  } catch (const std::system_error& error) {
    throw PlatformError(readOperation, _url, error.code().value());
  }
  giveBack(left);
}

bool DiskFolder::giveBack(const std::vector<std::string>& left) {
  bool hasComeBack = false;
  for (const std::string& name : left) {
    if (PrivateDirectory::isName(name, PrivateDirectory::Kind::taken)) {
      hasComeBack = giveBackLeft(_directory.get(), name, _directory.get()) || hasComeBack;
    } else {
      sweepLeftCopy(_directory.get(), name);
    }
  }
  return hasComeBack;
}

void DiskFolder::read(TreeVisitor& visitor) {
  // What came back is no part of what was read until then, so it is read once more.
  for (bool isFirst = true;; isFirst = false) {
    std::vector<std::string> left;
    FolderReading reading(_directory.get(), _url, kept(), HiddenNames::told);
    reading.readAll(visitor, [&](const char* name) {
      if (isLeft(name)) left.emplace_back(name);
    });
    if (!giveBack(left) || !isFirst) return;
    visitor.restart();
  }
}

ItemState DiskFolder::look(std::string_view name, Disposal disposal, TreeVisitor& visitor) {
  const FileURL url = _url.appendingPathComponent(name);
  if (!isEntryName(name)) throw PlatformError(readOperation, url, EINVAL);
  if (!_looks) _looks.emplace(_directory.get(), _url, kept(), HiddenNames::told);
  const bool isHiddenName = isHidden(name);
  // Rights that change during a run make a rename fail, which leaves the item as it was.
  if (!_holder) _holder = holderOf(_directory.get(), valuesOf(_directory, _url));

  for (int waits = 0;; ++waits) {
    Obstacles obstacles(*_holder, disposal);
    ItemState item = _looks->readOne(std::string(name), isHiddenName, &visitor, &obstacles);
    int code = obstacles.code();
    if (code == 0 && !item.tree.isComplete && isMountedBelow(name)) code = EXDEV;
    if (code != 0) item.obstacle = obstacleError(operationOf(disposal), url, code);
    // Another change within the same step of the clock would leave no trace.
    const Timestamp now = clockOfFiles();
    if (item.obstacle || item.latestChange < now) return item;
    if (waits == mostWaits || item.latestChange.seconds > now.seconds + 1) {
      item.obstacle.emplace(operationOf(disposal), url, EAGAIN, "it has dates in the future");
      return item;
    }
    nanosleep(&clockStep, nullptr);
    visitor.restart();
  }
}

bool DiskFolder::hasEntry(std::string_view name) const {
  EntryValues values{};
  const int code = readEntryValues(_directory.get(), std::string(name).c_str(), values);
  if (code != 0 && code != ENOENT)
    throw PlatformError("look for", _url.appendingPathComponent(name), code);
  return code == 0;
}

std::optional<FileURL> DiskFolder::trashItem(const ItemState& item) {
  return removal().trash(item, placeOf(item));
}

void DiskFolder::removeItem(const ItemState& item) {
  removal().remove(item, placeOf(item));
}

std::unique_ptr<BinnedItem> DiskFolder::binnedItem(const FileURL& place, std::string_view name) {
  return openBinnedItem(place, std::string(name), _directory.get(), currentURL());
}

const KeptDirectories& DiskFolder::kept() {
  if (_kept) return *_kept;
  _kept.emplace();
  _kept->fixedPlaces = identitiesOfFixedPlaces(surroundings().paths);
  _kept->rememberedInodes = std::shared_ptr<const InodeSet>(_known, &_known->inodes());
  // Another directory may have come to lie at the place of one, which its row will find there.
  for (const KnownFolder& folder : _known->inside(_url)) {
    EntryValues values{};
    if (readEntryValues(AT_FDCWD, folder.path.c_str(), values) == 0)
      _kept->inodesAtPlaces.insert(values.stx_ino);
  }
  return *_kept;
}

FileURL DiskFolder::currentURL() const {
  return pathOfDescriptor(_directory.get(), _url, readOperation);
}

/// Where an item lies now. Throws where that is in a Bin, or nowhere any more.
FileURL DiskFolder::placeOf(const ItemState& item) {
  // A folder that was moved or deleted has another path than the one that was looked at.
  if (!_place || currentURL() != *_place) _place = placeOutsideTrash(_directory.get(), _url);
  return _place->appendingPathComponent(item.name);
}

bool DiskFolder::isMountedBelow(std::string_view name) const {
  const std::string inside = currentURL().appendingPathComponent(name).path() + "/";
  return std::ranges::any_of(
      *_mounts->mounts(), [&](const Mount& mount) { return mount.mountPoint.starts_with(inside); });
}

bool DiskFolder::isHidden(std::string_view name) {
  try {
    return _hiddenNames.list(_directory.get()).hides(name);
  } catch (const std::system_error& error) {
    throw PlatformError(readOperation, _url, error.code().value());
  }
}

ItemRemoval& DiskFolder::removal() {
  if (!_removal) _removal.emplace(_directory.get(), kept());
  return *_removal;
}

}  // namespace tidemar
