#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TidemarCore/Date.h"
#include "TidemarCore/FileURL.h"
#include "TidemarKit/Store/Folder.h"
#include "TidemarKit/Store/JournalEntry.h"

namespace tidemar {

class DatabaseQueue;

/// All that is remembered between launches: a thin set of reads and writes over one SQLite file,
/// one transaction each. Any thread may call it; calls are served one at a time in order of
/// arrival, each blocking its caller. Every operation throws `DatabaseError`. One that meets
/// another program's lock waits for it; else nothing is tried twice. A write throws, before or
/// after its commit, where the file isn't in its place any more.
///
/// Dates are kept to the millisecond: a date read back may differ from the one written by less than
/// that.
class Store {
 public:
  /// A fresh store in memory, gone with this object.
  Store();

  /// Opens or creates the file and brings its schema up to date. Never erases anything. `patience`
  /// is how long another program's lock is waited for.
  explicit Store(const std::string& path,
                 std::chrono::milliseconds patience = std::chrono::seconds(30));

  ~Store();
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

  /// Where the file lies; none for a store in memory.
  std::optional<FileURL> directory() const;

  /// Tells whether all folders are where they were: it becomes another one with every row that
  /// comes, goes, or gets another path or bookmark, and with any write of another program.
  struct PlacesVersion {
    std::int64_t ours = 0;
    std::int64_t others = 0;

    friend bool operator==(const PlacesVersion&, const PlacesVersion&) = default;
  };
  PlacesVersion placesVersion() const;

  /// All folders in the order in which they were added.
  std::vector<Folder> folders() const;

  std::optional<Folder> folder(std::int64_t id) const;

  /// The first folder whose path equals this one byte for byte.
  std::optional<Folder> folder(const std::string& path) const;

  std::optional<JournalEntry> journalEntry(std::int64_t id) const;

  /// The entries performed at or after a date, newest first; of one run the last inserted first.
  std::vector<JournalEntry> journalSince(Date date) const;

  /// All entries of one folder, newest first; of one run the last inserted first.
  std::vector<JournalEntry> journalOfFolder(std::int64_t folderID) const;

  /// Inserts a row and answers the record with its new id.
  Folder insert(Folder folder);
  JournalEntry insert(JournalEntry entry);

  /// Inserts a row unless there is one by now that isn't among those known, and answers the record
  /// with its new id; none where nothing was inserted.
  std::optional<Folder> insert(Folder folder, const std::vector<Folder>& known);

  /// Throws where this very row couldn't be inserted just now and kept as it is. Leaves no trace.
  void tryInsert(const JournalEntry& entry);

  /// Throws where this very row couldn't be updated just now. Leaves no trace.
  void tryUpdate(const JournalEntry& entry);

  /// Inserts a row and gives the entry its id, even where it throws after the row may have reached
  /// the file; called again with such an entry it looks for that row first.
  void record(JournalEntry& entry);

  /// Writes all fields to the row of the record's id. Throws `RecordNotFound` where it is gone.
  void update(const Folder& folder);
  void update(const JournalEntry& entry);

  /// Changes a folder's row as it stands now and answers it; no other write comes between its
  /// reading and its writing. `change` must not call the store. Throws `RecordNotFound` as above.
  Folder change(std::optional<std::int64_t> folderID, const std::function<void(Folder&)>& change);

  /// Deletes a folder with its whole journal. Answers whether there was one.
  bool deleteFolder(std::int64_t id);

 private:
  std::unique_ptr<DatabaseQueue> _database;
  std::int64_t _placesChanges = 0;  ///< Changed and read by accesses to the database alone.
};

}  // namespace tidemar
