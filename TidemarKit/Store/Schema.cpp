#include "TidemarKit/Store/Schema.h"

#include "TidemarKit/Store/Database.h"

namespace tidemar {
namespace {

void createFoldersAndJournal(Database& database) {
  database.execute(R"sql(
      CREATE TABLE "folder" (
        "id" INTEGER PRIMARY KEY AUTOINCREMENT,
        "bookmark" BLOB NOT NULL,
        "path" TEXT NOT NULL,
        "maxAgeDays" INTEGER,
        "sizeLimit" INTEGER,
        "automatic" BOOLEAN NOT NULL,
        "emptyOnRestart" BOOLEAN NOT NULL,
        "disposal" TEXT NOT NULL,
        "createdAt" DATETIME NOT NULL,
        "lastRunAt" DATETIME NOT NULL
      );
      CREATE TABLE "journalEntry" (
        "id" INTEGER PRIMARY KEY AUTOINCREMENT,
        "folderID" INTEGER NOT NULL REFERENCES "folder" ON DELETE CASCADE,
        "disposal" TEXT NOT NULL,
        "name" TEXT NOT NULL,
        "binnedPath" TEXT,
        "size" INTEGER NOT NULL,
        "reasons" TEXT NOT NULL,
        "performedAt" DATETIME NOT NULL,
        "undoneAt" DATETIME
      );
      CREATE INDEX "index_journalEntry_on_folderID" ON "journalEntry" ("folderID");
      CREATE INDEX "index_journalEntry_on_performedAt" ON "journalEntry" ("performedAt");
  )sql");
}

}  // namespace

DatabaseMigrator storeMigrator() {
  DatabaseMigrator migrator;
  migrator.registerMigration("temporary folders and journal", createFoldersAndJournal);
  return migrator;
}

}  // namespace tidemar
