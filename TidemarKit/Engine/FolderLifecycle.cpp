#include <algorithm>
#include <cerrno>
#include <exception>
#include <utility>

#include "TidemarKit/Engine/Engine.h"
#include "TidemarKit/TemporaryTag.h"

namespace tidemar {

Engine::Engine(std::unique_ptr<Store> store, const FileManager& fileManager)
    : _store(std::move(store)),
      _ledger(*_store),
      _fileManager(fileManager),
      _logger("app.quernly.tidemar", "engine") {}

std::string Engine::canonicalPath(const FileURL& url) const {
  return _fileManager.canonicalPath(url);
}

Folder Engine::addFolder(const FileURL& url, Date now) {
  const auto place = _fileManager.openFolder(FileURL(canonicalPath(url)));
  Folder folder;
  folder.path = place->url().path();
  folder.createdAt = now;
  folder.lastRunAt = now;
  for (;;) {
    const std::vector<Folder> known = _store->folders();
    if (std::optional<Folder> living = folderLivingAt(*place, known)) return *std::move(living);
    folder.bookmark = place->bookmarkData();
    if (std::optional<Folder> added = _store->insert(folder, known)) return *std::move(added);
    // Someone else added a folder meanwhile, which may be this one.
  }
}

/// The row of the folder that is this directory. A row may have another path as long as the folder
/// hasn't been looked for since it moved; and one of this path may be that of a folder that is
/// elsewhere, or lost.
std::optional<Folder> Engine::folderLivingAt(const OpenFolder& place,
                                             const std::vector<Folder>& known) {
  const auto isThis = [&](const Folder& row) { return place.isRememberedBy(row.bookmark); };
  if (const auto row = std::ranges::find_if(known, isThis); row != known.end()) return *row;
  for (const Folder& row : known) {
    if (row.path != place.url().path()) continue;
    try {
      ResolvedFolder found = resolve(row);
      if (found.place->url() == place.url()) return std::move(found.folder);
    } catch (const PlatformError&) {
      // Lost: what lies here is another folder.
    }
  }
  return std::nullopt;
}

void Engine::setTemporary(const Folder& folder, bool isTemporary, Date now) {
  const std::unique_ptr<OpenFolder> place = resolve(folder).place;
  if (isTemporary) {
    TemporaryTag::add(*place);
  } else {
    TemporaryTag::remove(*place);
  }
  _store->change(folder.id, [&](Folder& row) {
    // A restart that lies before this moment must not empty the folder.
    if (isTemporary) row.lastRunAt = now;
  });
}

void Engine::forget(const Folder& folder) {
  if (!folder.id) throw MissingValue();
  std::unique_ptr<OpenFolder> place;
  try {
    place = resolve(folder).place;
  } catch (const std::exception&) {
    // Dropped: a folder that can't be found any more can still be forgotten.
  }
  if (place) {
    place->giveBackTaken();
    TemporaryTag::remove(*place);
  }
  _store->deleteFolder(*folder.id);
}

ResolvedFolder Engine::resolve(const Folder& folder) {
  OpenedBookmark opened = _fileManager.openBookmark(folder.bookmark);
  const FileURL& url = opened.folder->url();
  if (!opened.isStale && url.path() == folder.path) return {folder, std::move(opened.folder)};

  const auto isThis = [&](const Folder& other) {
    return opened.folder->isRememberedBy(other.bookmark);
  };
  if (opened.isReplacement && std::ranges::any_of(otherFolders(folder), isThis)) {
    throw PlatformError("find", url, ENOENT, "another folder has taken its place");
  }

  const std::string bookmark = opened.folder->bookmarkData();
  // To look for a folder takes a while, in which the user may have changed its rules.
  Folder moved = _store->change(folder.id, [&](Folder& row) {
    row.path = url.path();
    row.bookmark = bookmark;
  });
  return {std::move(moved), std::move(opened.folder)};
}

std::vector<Folder> Engine::otherFolders(const Folder& folder) const {
  std::vector<Folder> others = _store->folders();
  std::erase_if(others, [&](const Folder& other) { return other.id == folder.id; });
  return others;
}

/// Never older than the rows were when this was called.
std::shared_ptr<const KnownFolders> Engine::knownFolders() {
  const std::lock_guard lock(_knownMutex);
  // Asked before the rows are read: what changes in between is seen by the next call.
  const Store::PlacesVersion version = _store->placesVersion();
  if (_known && version == _knownVersion) return _known;
  std::vector<KnownFolder> folders;
  for (Folder& folder : _store->folders())
    folders.push_back({std::move(folder.bookmark), std::move(folder.path)});
  _known = std::make_shared<const KnownFolders>(std::move(folders));
  _knownVersion = version;
  return _known;
}

ResolvedFolder Engine::resolvedFolder(std::int64_t id) {
  const std::optional<Folder> folder = _store->folder(id);
  if (!folder) throw Failure(Failure::FolderNotFound{id});
  return resolve(*folder);
}

}  // namespace tidemar
