#include <algorithm>
#include <cerrno>
#include <exception>
#include <utility>

#include "TidemarKit/Engine/Engine.h"
#include "TidemarKit/TemporaryTag.h"

namespace tidemar {

Engine::Engine(std::unique_ptr<Store> store, const FileManager& fileManager)
    : _store(std::move(store)),
      _fileManager(fileManager),
      _logger("app.quernly.tidemar", "engine") {}

std::string Engine::canonicalPath(const FileURL& url) const {
  return _fileManager.canonicalPath(url);
}

Folder Engine::addFolder(const FileURL& url, Date now) {
  const std::string path = canonicalPath(url);
  if (std::optional<Folder> known = _store->folder(path)) return *known;

  Folder folder;
  // Of the canonical place: the URL may be a link, which is no directory of its own.
  folder.bookmark = _fileManager.bookmarkData(FileURL(path));
  folder.path = path;
  folder.createdAt = now;
  folder.lastRunAt = now;
  return _store->insert(std::move(folder));
}

void Engine::setTemporary(const Folder& folder, bool isTemporary, Date now) {
  const FileURL url = resolve(folder).url;
  if (isTemporary) {
    TemporaryTag::add(_fileManager, url);
  } else {
    TemporaryTag::remove(_fileManager, url);
  }
  _store->change(folder.id, [&](Folder& row) {
    // A restart that lies before this moment must not empty the folder.
    if (isTemporary) row.lastRunAt = now;
  });
}

void Engine::forget(const Folder& folder) {
  if (!folder.id) throw MissingValue();
  std::optional<FileURL> url;
  try {
    url = resolve(folder).url;
  } catch (const std::exception&) {
    // Dropped: a folder that can't be found any more can still be forgotten.
  }
  if (url) TemporaryTag::remove(_fileManager, *url);
  _store->deleteFolder(*folder.id);
}

ResolvedFolder Engine::resolve(const Folder& folder) {
  const ResolvedBookmark resolved = _fileManager.resolveBookmark(folder.bookmark);
  if (!resolved.isStale && resolved.url.path() == folder.path) return {folder, resolved.url};

  if (resolved.isReplacement && isAnotherFolder(resolved.url, folder)) {
    throw PlatformError("find", resolved.url, ENOENT, "another folder has taken its place");
  }

  const std::string bookmark = _fileManager.bookmarkData(resolved.url);
  // To look for a folder takes a while, in which the user may have changed its rules.
  Folder moved = _store->change(folder.id, [&](Folder& row) {
    row.path = resolved.url.path();
    row.bookmark = bookmark;
  });
  return {std::move(moved), resolved.url};
}

/// Whether a place is that of a folder with another row.
bool Engine::isAnotherFolder(const FileURL& url, const Folder& folder) const {
  return std::ranges::any_of(_store->folders(), [&](const Folder& other) {
    if (other.id == folder.id) return false;
    try {
      const ResolvedBookmark place = _fileManager.resolveBookmark(other.bookmark);
      return !place.isReplacement && place.url == url;
    } catch (const PlatformError&) {
      return false;  // Where it can't be found, it doesn't lie here.
    }
  });
}

ResolvedFolder Engine::resolvedFolder(std::int64_t id) {
  const std::optional<Folder> folder = _store->folder(id);
  if (!folder) throw Failure(Failure::FolderNotFound{id});
  return resolve(*folder);
}

}  // namespace tidemar
