#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TidemarCore/Date.h"
#include "TidemarKit/Store/Folder.h"
#include "TidemarKit/Store/JournalEntry.h"

namespace tidemar {

class DatabaseQueue;

/// All that is remembered between launches: a thin set of reads and writes over one SQLite file,
/// one transaction each. Any thread may call it; calls are served one at a time
/// in order of arrival, each blocking its caller. Every operation throws `DatabaseError` and
/// retries nothing.
///
/// Dates are kept to the millisecond: a date read back may differ from the one written by less than
/// that.
class Store {
 public:
  /// A fresh store in memory, gone with this object.
  Store();

  /// Opens or creates the file and brings its schema up to date. Never erases anything.
  explicit Store(const std::string& path);

  ~Store();
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

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

  /// Throws where the file can't be written just now: writes it, and changes nothing that it says.
  void requireWritable();

  /// Inserts a row and answers the record with its new id.
  Folder insert(Folder folder);
  JournalEntry insert(JournalEntry entry);

  /// Writes all fields to the row of the record's id. Throws `RecordNotFound` where the row is
  /// gone.
  void update(const Folder& folder);
  void update(const JournalEntry& entry);

  /// Changes a folder's row as it stands now and answers it; no other write comes between its
  /// reading and its writing. `change` must not call the store. Throws `RecordNotFound` as above.
  Folder change(std::optional<std::int64_t> folderID, const std::function<void(Folder&)>& change);

  /// Deletes a folder with its whole journal. Answers whether there was one.
  bool deleteFolder(std::int64_t id);

 private:
  std::unique_ptr<DatabaseQueue> database;
};

}  // namespace tidemar
