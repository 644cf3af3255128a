#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>

#include <sqlite3.h>

#include "TidemarCore/FolderSnapshot.h"
#include "TidemarKit/Engine/Engine.h"
#include "TidemarKit/Inventory.h"
#include "TidemarKit/Store/DatabaseError.h"
#include "TidemarKit/System.h"
#include "TidemarKit/TemporaryTag.h"

namespace tidemar {
namespace {

bool isHeldByOthers(const std::exception& error) {
  const auto* failure = dynamic_cast<const DatabaseError*>(&error);
  constexpr int primaryCode = 0xff;
  return failure != nullptr && (failure->code() & primaryCode) == SQLITE_BUSY;
}

}  // namespace

FolderStatus Engine::status(std::int64_t folderID, Date now) {
  return read(folderID, now).status;
}

RunResult Engine::run(std::int64_t folderID, Date now, RunGate& gate) {
  settleLedger();
  auto [folder, place, status] = read(folderID, now);

  const RunGate::Passage passage(gate);
  RunResult result;
  std::exception_ptr databaseIsHeld;
  bool isCutShort = false;
  for (const Removal& removal : status.dueNow) {
    isCutShort = gate.isClosed(folderID);
    if (isCutShort || !TemporaryTag::isTagged(*place)) break;
    try {
      // Another program was waited for long enough; the rest of the items isn't touched.
      if (databaseIsHeld) std::rethrow_exception(databaseIsHeld);
      result.journal.push_back(remove(removal, *place, folder, now));
    } catch (const std::exception& error) {
      if (isHeldByOthers(error)) databaseIsHeld = std::current_exception();
      result.failures.push_back({*removal.item, std::current_exception()});
      _logger.log(LogLevel::error, "Couldn't remove %{private}s: %{public}s",
                  removal.item->url.path(), textWithoutPath(error));
    }
  }

  settleLedger();
  // A run that was cut short leaves the rest to the next one, whatever rule it was due by.
  if (!isCutShort) {
    // The rules may have been changed during the run, and stay as they are now.
    _store->change(folder.id, [&](Folder& row) { row.lastRunAt = now; });
  }
  _logger.log(LogLevel::info, "Removed %ld items, %ld failed", result.journal.size(),
              result.failures.size());
  if (status.dueNow.empty()) result.untouched = FolderReport{std::move(folder), std::move(status)};
  return result;
}

void Engine::settleLedger() {
  try {
    _ledger.settle();
  } catch (const DatabaseError& error) {
    // What is outstanding keeps everything else from going, and is tried again.
    _logger.log(LogLevel::error, "Couldn't write the journal: %{public}s", error.what());
  }
}

Engine::Reading Engine::read(std::int64_t folderID, Date now) {
  auto [folder, place] = resolvedFolder(folderID);
  place->setKnownFolders(knownFolders());

  const bool isTagged = TemporaryTag::holdsName(TemporaryTag::tags(*place));
  const System::Capacity capacity = System::capacity(*place);

  const FileURL home = _fileManager.homeDirectoryForCurrentUser();
  std::vector<FileURL> fixedPlaces = _fileManager.mountedVolumeURLs();
  std::ranges::move(_fileManager.systemDirectoryURLs(), std::back_inserter(fixedPlaces));
  const bool isProtectedRoot = System::isProtectedRoot(*place, home, fixedPlaces);

  FolderSnapshot snapshot{isTagged, isProtectedRoot, Inventory::items(*place)};
  const RunConditions conditions{now, capacity.available, capacity.total,
                                 System::bootTime(_fileManager), folder.lastRunAt};

  FolderStatus status =
      plannedStatus(place->url(), std::move(snapshot), folder.settings, conditions);
  return {std::move(folder), std::move(place), std::move(status)};
}

JournalEntry Engine::remove(const Removal& removal, OpenFolder& place, const Folder& folder,
                            Date now) {
  const FileURL& url = removal.item->url;
  const Disposal disposal = folder.settings.disposal;
  const Inventory::Look look = Inventory::item(place, url.lastPathComponent(), disposal);
  const std::optional<Date> freshness = look.item ? look.item->freshness : std::nullopt;
  if (freshness != removal.item->freshness) throw Failure(Failure::ChangedSincePlanned{url.path()});
  if (look.state.obstacle) throw PlatformError(*look.state.obstacle);

  if (!folder.id) throw MissingValue();
  JournalEntry entry;
  entry.folderID = *folder.id;
  entry.disposal = disposal;
  entry.name = url.lastPathComponent();
  if (disposal == Disposal::bin) entry.binnedPath = url.path();  // Until it is known.
  entry.size = removal.item->size;
  entry.reasons = removal.reasons;
  entry.performedAt = now;

  _ledger.prepare(entry);
  try {
    if (disposal == Disposal::delete_) {
      place.removeItem(look.state);
    } else {
      const std::optional<FileURL> binned = place.trashItem(look.state);
      if (!binned) throw MissingValue();
      entry.binnedPath = binned->path();
    }
  } catch (const ItemChanged&) {
    throw Failure(Failure::ChangedSincePlanned{url.path()});
  }
  return _ledger.record(std::move(entry));
}

}  // namespace tidemar
