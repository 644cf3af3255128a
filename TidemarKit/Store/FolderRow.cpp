#include "TidemarKit/Store/FolderRow.h"

#include <string_view>

#include "TidemarKit/Store/Database.h"
#include "TidemarKit/Store/StoredWords.h"

namespace tidemar::FolderRow {
namespace {

std::string select(std::string_view rest) {
  std::string sql =
      "SELECT id, bookmark, path, maxAgeDays, sizeLimit, automatic, emptyOnRestart, disposal,"
      " createdAt, lastRunAt FROM folder ";
  return sql += rest;
}

Folder folder(const Row& row) {
  Folder folder;
  folder.id = row.integer(0);
  folder.bookmark = row.blob(1);
  folder.path = row.text(2);
  folder.settings.maxAgeDays = row.optional(3, &Row::integer);
  folder.settings.sizeLimit = row.optional(4, &Row::integer);
  folder.settings.automatic = row.boolean(5);
  folder.settings.emptyOnRestart = row.boolean(6);
  folder.settings.disposal = StoredWords::disposal(row.text(7));
  folder.createdAt = row.date(8);
  folder.lastRunAt = row.date(9);
  return folder;
}

std::optional<Folder> first(Statement& statement) {
  if (!statement.step()) return std::nullopt;
  return folder(statement.row());
}

}  // namespace

std::vector<Folder> all(Database& database) {
  std::vector<Folder> folders;
  Statement statement = database.statement(select("ORDER BY createdAt, id"));
  while (statement.step())
    folders.push_back(folder(statement.row()));
  return folders;
}

std::optional<Folder> withID(Database& database, std::int64_t id) {
  Statement statement = database.statement(select("WHERE id = ?"));
  return first(statement.bind(id));
}

std::optional<Folder> withPath(Database& database, const std::string& path) {
  Statement statement = database.statement(select("WHERE path = ? ORDER BY id LIMIT 1"));
  return first(statement.bind(path));
}

std::int64_t insert(Database& database, const Folder& folder) {
  database
      .statement(
          "INSERT INTO folder (id, bookmark, path, maxAgeDays, sizeLimit, automatic,"
          " emptyOnRestart, disposal, createdAt, lastRunAt)"
          " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
      .bind(folder.id, Blob{folder.bookmark}, folder.path, folder.settings.maxAgeDays,
            folder.settings.sizeLimit, folder.settings.automatic, folder.settings.emptyOnRestart,
            rawValue(folder.settings.disposal), folder.createdAt, folder.lastRunAt)
      .run();
  return database.lastInsertedRowID();
}

bool update(Database& database, const Folder& folder) {
  database
      .statement(
          "UPDATE folder SET bookmark = ?, path = ?, maxAgeDays = ?, sizeLimit = ?, automatic = ?,"
          " emptyOnRestart = ?, disposal = ?, createdAt = ?, lastRunAt = ? WHERE id = ?")
      .bind(Blob{folder.bookmark}, folder.path, folder.settings.maxAgeDays,
            folder.settings.sizeLimit, folder.settings.automatic, folder.settings.emptyOnRestart,
            rawValue(folder.settings.disposal), folder.createdAt, folder.lastRunAt, folder.id)
      .run();
  return database.changedRowCount() > 0;
}

bool remove(Database& database, std::int64_t id) {
  database.statement("DELETE FROM folder WHERE id = ?").bind(id).run();
  return database.changedRowCount() > 0;
}

}  // namespace tidemar::FolderRow
