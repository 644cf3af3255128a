#pragma once

#include <deque>
#include <functional>
#include <mutex>

#include "Platform/Logger.h"
#include "TidemarKit/Store/JournalEntry.h"
#include "TidemarKit/Store/SpaceReserve.h"

namespace tidemar {

class DatabaseError;
class Store;

/// Sees to it that no removal and no put-back goes without its row in the journal: before an item
/// moves its row is tried, and a row that couldn't be written is kept, in memory, and written
/// before anything else moves. So at most the items in hand ever lack their rows, one a run. A row
/// with an `undoneAt` is that of a put-back, which is there already and is updated; any other is
/// inserted.
///
/// Any thread may call it. Where another program holds the database's file, calls wait for it as
/// long as the store does. What is thrown is `DatabaseError`.
class RemovalLedger {
 public:
  /// The store must outlive the ledger.
  explicit RemovalLedger(Store& store);

  /// Call it before each removal or put-back, with the row as it will be, as far as that is known.
  /// Writes what is outstanding, then tries this very row and leaves no trace of it. Where it
  /// throws nothing may go.
  ///
  /// Where the disk is full and the item is to be deleted, which makes room, the space that is
  /// kept for this is given up first.
  void prepare(const JournalEntry& entry);

  /// Call it when the item has moved. Writes the row and answers it with its id. Where it throws
  /// the row is outstanding, save that of a folder whose own row is gone: its journal went too.
  JournalEntry record(JournalEntry entry);

  /// Call it at the end of a run and at the start of a cycle: writes what is outstanding, in the
  /// order in which it went, and keeps space for a full disk where it can. Throws if some remains.
  /// A row of a folder that was forgotten meanwhile can't be written any more; it is dropped, and
  /// the log says so.
  void settle();

  /// Whether every row is written.
  bool isSettled() const;

 private:
  void writeOutstanding();
  void write(JournalEntry& entry);
  bool isOfForgottenFolder(const JournalEntry& entry, const DatabaseError& error);
  void withReserve(const std::function<void()>& write);
  bool isForLackOfSpace(const DatabaseError& error) const;

  Store& _store;
  SpaceReserve _reserve;
  Logger _logger;
  mutable std::mutex _mutex;
  std::deque<JournalEntry> _outstanding;
};

}  // namespace tidemar
