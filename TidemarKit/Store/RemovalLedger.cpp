#include "TidemarKit/Store/RemovalLedger.h"

#include <utility>

#include <sqlite3.h>

#include "TidemarKit/Store/DatabaseError.h"
#include "TidemarKit/Store/Store.h"

namespace tidemar {
namespace {

/// The row of an item that was put back is there already.
bool isUpdate(const JournalEntry& entry) {
  return entry.undoneAt.has_value();
}

}  // namespace

RemovalLedger::RemovalLedger(Store& store)
    : _store(store), _reserve(store.directory()), _logger("app.quernly.tidemar", "engine") {}

void RemovalLedger::prepare(const JournalEntry& entry) {
  const std::lock_guard guard(_mutex);
  writeOutstanding();
  _reserve.keepAgain();
  const auto attempt = [&] { isUpdate(entry) ? _store.tryUpdate(entry) : _store.tryInsert(entry); };
  // The Bin makes no room: given up for it, the space would be missing to what does.
  entry.disposal == Disposal::delete_ ? withReserve(attempt) : attempt();
}

JournalEntry RemovalLedger::record(JournalEntry entry) {
  const std::lock_guard guard(_mutex);
  try {
    withReserve([&] { write(entry); });
  } catch (const DatabaseError& error) {
    if (!isOfForgottenFolder(entry, error)) _outstanding.push_back(std::move(entry));
    throw;
  }
  return entry;
}

void RemovalLedger::settle() {
  const std::lock_guard guard(_mutex);
  writeOutstanding();
  _reserve.keep();
}

bool RemovalLedger::isSettled() const {
  const std::lock_guard guard(_mutex);
  return _outstanding.empty();
}

void RemovalLedger::writeOutstanding() {
  while (!_outstanding.empty()) {
    JournalEntry& entry = _outstanding.front();
    try {
      withReserve([&] { write(entry); });
    } catch (const DatabaseError& error) {
      if (!isOfForgottenFolder(entry, error)) throw;
      _logger.log(LogLevel::error, "Dropped the entry of %{private}s: its folder was forgotten",
                  entry.name);
    }
    _outstanding.pop_front();
  }
}

void RemovalLedger::write(JournalEntry& entry) {
  if (isUpdate(entry)) {
    _store.update(entry);
  } else {
    _store.record(entry);
  }
}

bool RemovalLedger::isOfForgottenFolder(const JournalEntry& entry, const DatabaseError& error) {
  const bool isGone = error.code() == SQLITE_CONSTRAINT_FOREIGNKEY ||
                      dynamic_cast<const RecordNotFound*>(&error) != nullptr;
  return isGone && !_store.folder(entry.folderID);
}

void RemovalLedger::withReserve(const std::function<void()>& write) {
  try {
    write();
  } catch (const DatabaseError& error) {
    if (!isForLackOfSpace(error) || !_reserve.giveUp()) throw;
    _logger.log(LogLevel::info, "The disk is full: gave up the space kept for the journal");
    write();
  }
}

bool RemovalLedger::isForLackOfSpace(const DatabaseError& error) const {
  switch (error.code() & 0xff) {
    case SQLITE_FULL:
      return true;
    case SQLITE_CANTOPEN:
    case SQLITE_IOERR:
      // A quota, or a directory that can't grow, reaches SQLite as any other failure.
      return _reserve.isDiskFull();
    default:
      return false;
  }
}

}  // namespace tidemar
