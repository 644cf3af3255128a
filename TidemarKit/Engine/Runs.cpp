#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>

#include "TidemarCore/FolderSnapshot.h"
#include "TidemarKit/Engine/Engine.h"
#include "TidemarKit/Inventory.h"
#include "TidemarKit/System.h"
#include "TidemarKit/TemporaryTag.h"

namespace tidemar {

FolderStatus Engine::status(std::int64_t folderID, Date now) {
  return read(folderID, now).status;
}

RunResult Engine::run(std::int64_t folderID, Date now, RunGate& gate) {
  const auto [folder, status] = read(folderID, now);

  // Nothing may go for which there would be no entry.
  if (!status.dueNow.empty()) _store->requireWritable();

  const RunGate::Passage passage(gate);
  RunResult result;
  for (const Removal& removal : status.dueNow) {
    if (gate.isClosed() || !TemporaryTag::isTagged(_fileManager, status.url)) break;
    try {
      result.journal.push_back(remove(removal, folder, now));
    } catch (const std::exception& error) {
      result.failures.push_back({removal.item, std::current_exception()});
      _logger.log(LogLevel::error, "Couldn't remove %{private}s: %{public}s",
                  removal.item.url.path(), textWithoutPath(error));
    }
  }

  // The rules may have been changed during the run, and stay as they are now.
  _store->change(folder.id, [&](Folder& row) { row.lastRunAt = now; });
  _logger.log(LogLevel::info, "Removed %ld items, %ld failed", result.journal.size(),
              result.failures.size());
  return result;
}

Engine::Reading Engine::read(std::int64_t folderID, Date now) {
  auto [folder, url] = resolvedFolder(folderID);
  const bool isTagged = TemporaryTag::holdsName(TemporaryTag::tags(_fileManager, url));
  const System::Capacity capacity = System::capacity(_fileManager, url);

  const FileURL home = _fileManager.homeDirectoryForCurrentUser();
  std::vector<FileURL> fixedPlaces = _fileManager.mountedVolumeURLs();
  std::ranges::move(_fileManager.systemDirectoryURLs(), std::back_inserter(fixedPlaces));
  const bool isProtectedRoot = System::isProtectedRoot(_fileManager, url, home, fixedPlaces);

  FolderSnapshot snapshot{isTagged, isProtectedRoot, Inventory::items(_fileManager, url)};
  const RunConditions conditions{now, capacity.available, capacity.total,
                                 System::bootTime(_fileManager), folder.lastRunAt};

  FolderStatus status;
  status.url = url;
  status.isTagged = isTagged;
  status.isProtectedRoot = isProtectedRoot;
  status.dueNow = removalsDueNow(snapshot, folder.settings, conditions);
  status.upcoming = upcomingRemovals(snapshot, folder.settings);
  status.items = std::move(snapshot.items);
  return {std::move(folder), std::move(status)};
}

JournalEntry Engine::remove(const Removal& removal, const Folder& folder, Date now) {
  const FileURL& url = removal.item.url;
  const std::optional<Item> present = Inventory::item(_fileManager, url);
  const std::optional<Date> freshness = present ? present->freshness : std::nullopt;
  if (freshness != removal.item.freshness) throw Failure(Failure::ChangedSincePlanned{url.path()});

  const std::optional<FileURL> binned = dispose(url, folder.settings.disposal);

  if (!folder.id) throw MissingValue();
  JournalEntry entry;
  entry.folderID = *folder.id;
  entry.disposal = folder.settings.disposal;
  entry.name = url.lastPathComponent();
  if (binned) entry.binnedPath = binned->path();
  entry.size = removal.item.size;
  entry.reasons = removal.reasons;
  entry.performedAt = now;
  return _store->insert(std::move(entry));
}

/// Answers where the item lies in the Bin; nothing for a deleted one.
std::optional<FileURL> Engine::dispose(const FileURL& url, Disposal disposal) const {
  if (disposal == Disposal::delete_) {
    _fileManager.removeItem(url);
    return std::nullopt;
  }
  std::optional<FileURL> binned = _fileManager.trashItem(url);
  if (!binned) throw MissingValue();
  return binned;
}

}  // namespace tidemar
