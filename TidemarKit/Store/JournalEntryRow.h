#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "TidemarCore/Date.h"
#include "TidemarKit/Store/JournalEntry.h"

namespace tidemar {
class Database;
}

/// The statements on the table `journalEntry`, and an entry as one of its rows. All throw
/// `DatabaseError`.
namespace tidemar::JournalEntryRow {

std::optional<JournalEntry> withID(Database& database, std::int64_t id);

/// Newest first; of equal dates the one inserted last first.
std::vector<JournalEntry> since(Database& database, Date date);
std::vector<JournalEntry> ofFolder(Database& database, std::int64_t folderID);

/// Whether the row of the entry's id is there and says what the entry says.
bool isStored(Database& database, const JournalEntry& entry);

/// Answers the id of the new row: the entry's own where it has one. Throws for a row that is not
/// there then as it was written, which a trigger can bring about.
std::int64_t insert(Database& database, const JournalEntry& entry);

/// Answers whether there was a row of the entry's id.
bool update(Database& database, const JournalEntry& entry);

}  // namespace tidemar::JournalEntryRow
