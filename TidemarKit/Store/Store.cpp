#include "TidemarKit/Store/Store.h"

#include <algorithm>
#include <string_view>

#include <sqlite3.h>

#include "TidemarKit/Store/Database.h"
#include "TidemarKit/Store/DatabaseError.h"
#include "TidemarKit/Store/DatabaseQueue.h"
#include "TidemarKit/Store/FolderRow.h"
#include "TidemarKit/Store/JournalEntryRow.h"
#include "TidemarKit/Store/Schema.h"

namespace tidemar {
namespace {

RecordNotFound notFound(std::string_view record, std::optional<std::int64_t> id) {
  std::string sentence = "There is no " + std::string(record);
  sentence += id ? " with the id " + std::to_string(*id) : " without an id";
  return {SQLITE_NOTFOUND, sentence + " in the database."};
}

void updateRow(Database& database, const JournalEntry& entry) {
  if (!JournalEntryRow::update(database, entry)) throw notFound("journal entry", entry.id);
}

}  // namespace

Store::Store() : _database(std::make_unique<DatabaseQueue>()) {
  storeMigrator().migrate(*_database);
}

Store::Store(const std::string& path, std::chrono::milliseconds patience)
    : _database(std::make_unique<DatabaseQueue>(path, patience)) {
  storeMigrator().migrate(*_database);
}

Store::~Store() = default;

std::optional<FileURL> Store::directory() const {
  const std::string file = _database->file();
  if (file.empty()) return std::nullopt;
  return FileURL(file).deletingLastPathComponent();
}

Store::PlacesVersion Store::placesVersion() const {
  return _database->read([&](Database& db) {
    return PlacesVersion{.ours = _placesChanges, .others = db.otherConnectionsVersion()};
  });
}

std::vector<Folder> Store::folders() const {
  return _database->read([](Database& db) { return FolderRow::all(db); });
}

std::optional<Folder> Store::folder(std::int64_t id) const {
  return _database->read([&](Database& db) { return FolderRow::withID(db, id); });
}

std::optional<Folder> Store::folder(const std::string& path) const {
  return _database->read([&](Database& db) { return FolderRow::withPath(db, path); });
}

std::optional<JournalEntry> Store::journalEntry(std::int64_t id) const {
  return _database->read([&](Database& db) { return JournalEntryRow::withID(db, id); });
}

std::vector<JournalEntry> Store::journalSince(Date date) const {
  return _database->read([&](Database& db) { return JournalEntryRow::since(db, date); });
}

std::vector<JournalEntry> Store::journalOfFolder(std::int64_t folderID) const {
  return _database->read([&](Database& db) { return JournalEntryRow::ofFolder(db, folderID); });
}

Folder Store::insert(Folder folder) {
  folder.id = _database->write([&](Database& db) {
    ++_placesChanges;
    return FolderRow::insert(db, folder);
  });
  return folder;
}

std::optional<Folder> Store::insert(Folder folder, const std::vector<Folder>& known) {
  return _database->write([&](Database& db) -> std::optional<Folder> {
    const auto isKnown = [&](const Folder& row) {
      return std::ranges::find(known, row.id, &Folder::id) != known.end();
    };
    if (!std::ranges::all_of(FolderRow::all(db), isKnown)) return std::nullopt;
    ++_placesChanges;
    folder.id = FolderRow::insert(db, folder);
    return std::move(folder);
  });
}

JournalEntry Store::insert(JournalEntry entry) {
  entry.id = _database->write([&](Database& db) { return JournalEntryRow::insert(db, entry); });
  return entry;
}

void Store::tryInsert(const JournalEntry& entry) {
  _database->attempt([&](Database& db) { JournalEntryRow::insert(db, entry); });
}

void Store::tryUpdate(const JournalEntry& entry) {
  _database->attempt([&](Database& db) { updateRow(db, entry); });
}

void Store::record(JournalEntry& entry) {
  _database->write([&](Database& db) {
    if (JournalEntryRow::isStored(db, entry)) return;
    entry.id.reset();
    entry.id = JournalEntryRow::insert(db, entry);
  });
}

void Store::update(const Folder& folder) {
  _database->write([&](Database& db) {
    ++_placesChanges;
    if (!FolderRow::update(db, folder)) throw notFound("folder", folder.id);
  });
}

void Store::update(const JournalEntry& entry) {
  _database->write([&](Database& db) { updateRow(db, entry); });
}

Folder Store::change(std::optional<std::int64_t> folderID,
                     const std::function<void(Folder&)>& change) {
  return _database->write([&](Database& db) {
    auto folder = folderID ? FolderRow::withID(db, *folderID) : std::nullopt;
    if (!folder) throw notFound("folder", folderID);
    const Folder before = *folder;
    change(*folder);
    if (folder->path != before.path || folder->bookmark != before.bookmark) ++_placesChanges;
    FolderRow::update(db, *folder);
    return *std::move(folder);
  });
}

bool Store::deleteFolder(std::int64_t id) {
  return _database->write([&](Database& db) {
    ++_placesChanges;
    return FolderRow::remove(db, id);
  });
}

}  // namespace tidemar
