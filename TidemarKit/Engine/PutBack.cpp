#include <cerrno>

#include "TidemarKit/Engine/Engine.h"

namespace tidemar {

void Engine::undo(std::int64_t journalEntryID, Date now) {
  settleLedger();
  std::optional<JournalEntry> entry = _store->journalEntry(journalEntryID);
  if (!entry) throw Failure(Failure::JournalEntryNotFound{journalEntryID});
  if (entry->undoneAt) throw Failure(Failure::AlreadyUndone{});
  if (!entry->binnedPath) throw Failure(Failure::DeletedPermanently{});
  // The journal is a file that others can write to: no name of it leads out of the folder.
  if (!isEntryName(entry->name)) {
    throw PlatformError("put back", FileURL(entry->name), EINVAL,
                        "its name in the journal isn't the name of one item");
  }

  const std::unique_ptr<OpenFolder> place = resolvedFolder(entry->folderID).place;
  const std::unique_ptr<BinnedItem> item =
      place->binnedItem(FileURL(*entry->binnedPath), entry->name);
  if (!item) throw Failure(Failure::GoneFromBin{*entry->binnedPath});
  if (place->hasEntry(entry->name)) {
    throw Failure(
        Failure::OriginalPathTaken{place->url().appendingPathComponent(entry->name).path()});
  }
  entry->undoneAt = now;
  _ledger.prepare(*entry);
  item->putBack();
  _ledger.record(*std::move(entry));
}

}  // namespace tidemar
