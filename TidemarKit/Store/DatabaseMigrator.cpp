#include "TidemarKit/Store/DatabaseMigrator.h"

#include <set>
#include <utility>

#include "TidemarKit/Store/DatabaseQueue.h"

namespace tidemar {
namespace {

std::set<std::string> appliedIdentifiers(Database& database) {
  std::set<std::string> identifiers;
  Statement statement = database.statement("SELECT identifier FROM grdb_migrations");
  while (statement.step())
    identifiers.insert(statement.row().text(0));
  return identifiers;
}

}  // namespace

void DatabaseMigrator::registerMigration(std::string identifier, Migration migration) {
  _migrations.push_back({std::move(identifier), std::move(migration)});
}

void DatabaseMigrator::migrate(DatabaseQueue& queue) const {
  queue.write([](Database& database) {
    database.execute(
        "CREATE TABLE IF NOT EXISTS grdb_migrations (identifier TEXT NOT NULL PRIMARY KEY)");
  });
  const std::set<std::string> applied = queue.read(appliedIdentifiers);
  for (const Registered& registered : _migrations) {
    if (applied.contains(registered.identifier)) continue;
    queue.write([&](Database& database) {
      registered.migration(database);
      database.statement("INSERT INTO grdb_migrations (identifier) VALUES (?)")
          .bind(registered.identifier)
          .run();
    });
  }
}

}  // namespace tidemar
