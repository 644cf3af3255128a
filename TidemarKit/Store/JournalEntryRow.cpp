#include "TidemarKit/Store/JournalEntryRow.h"

#include <string>
#include <string_view>

#include <sqlite3.h>

#include "TidemarKit/Store/Database.h"
#include "TidemarKit/Store/DatabaseDate.h"
#include "TidemarKit/Store/DatabaseError.h"
#include "TidemarKit/Store/StoredWords.h"

namespace tidemar::JournalEntryRow {
namespace {

std::string select(std::string_view rest) {
  std::string sql =
      "SELECT id, folderID, disposal, name, binnedPath, size, reasons, performedAt, undoneAt"
      " FROM journalEntry ";
  return sql += rest;
}

JournalEntry entry(const Row& row) {
  JournalEntry entry;
  entry.id = row.integer(0);
  entry.folderID = row.integer(1);
  entry.disposal = StoredWords::disposal(row.text(2));
  entry.name = row.text(3);
  entry.binnedPath = row.optional(4, &Row::text);
  entry.size = row.integer(5);
  entry.reasons = StoredWords::reasons(row.text(6));
  entry.performedAt = row.date(7);
  entry.undoneAt = row.optional(8, &Row::date);
  return entry;
}

/// An entry as it will be read back: its dates are kept to the millisecond.
JournalEntry asStored(JournalEntry entry) {
  const auto stored = [](Date date) { return DatabaseDate::date(DatabaseDate::text(date)); };
  entry.performedAt = stored(entry.performedAt);
  if (entry.undoneAt) entry.undoneAt = stored(*entry.undoneAt);
  return entry;
}

std::vector<JournalEntry> all(Statement& statement) {
  std::vector<JournalEntry> entries;
  while (statement.step())
    entries.push_back(entry(statement.row()));
  return entries;
}

}  // namespace

std::optional<JournalEntry> withID(Database& database, std::int64_t id) {
  Statement statement = database.statement(select("WHERE id = ?"));
  if (!statement.bind(id).step()) return std::nullopt;
  return entry(statement.row());
}

std::vector<JournalEntry> since(Database& database, Date date) {
  Statement statement =
      database.statement(select("WHERE performedAt >= ? ORDER BY performedAt DESC, id DESC"));
  return all(statement.bind(date));
}

std::vector<JournalEntry> ofFolder(Database& database, std::int64_t folderID) {
  Statement statement =
      database.statement(select("WHERE folderID = ? ORDER BY performedAt DESC, id DESC"));
  return all(statement.bind(folderID));
}

bool isStored(Database& database, const JournalEntry& entry) {
  return entry.id && withID(database, *entry.id) == asStored(entry);
}

std::int64_t insert(Database& database, const JournalEntry& entry) {
  database
      .statement(
          "INSERT INTO journalEntry (id, folderID, disposal, name, binnedPath, size, reasons,"
          " performedAt, undoneAt) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)")
      .bind(entry.id, entry.folderID, rawValue(entry.disposal), entry.name, entry.binnedPath,
            entry.size, StoredWords::text(entry.reasons), entry.performedAt, entry.undoneAt)
      .run();
  JournalEntry inserted = entry;
  inserted.id = database.lastInsertedRowID();
  if (!isStored(database, inserted)) {
    throw DatabaseError(SQLITE_MISMATCH,
                        "Couldn't write to the database: its journal doesn't keep a row as it is "
                        "written.");
  }
  return *inserted.id;
}

bool update(Database& database, const JournalEntry& entry) {
  database
      .statement(
          "UPDATE journalEntry SET folderID = ?, disposal = ?, name = ?, binnedPath = ?, size = ?,"
          " reasons = ?, performedAt = ?, undoneAt = ? WHERE id = ?")
      .bind(entry.folderID, rawValue(entry.disposal), entry.name, entry.binnedPath, entry.size,
            StoredWords::text(entry.reasons), entry.performedAt, entry.undoneAt, entry.id)
      .run();
  return database.changedRowCount() > 0;
}

}  // namespace tidemar::JournalEntryRow
