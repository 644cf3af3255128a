#include "TidemarKit/Store/Transaction.h"

#include "TidemarKit/Store/Database.h"
#include "TidemarKit/Store/DatabaseError.h"

namespace tidemar {

Transaction::Transaction(Database& database, Kind kind) : _database(database) {
  _database.statement(kind == Kind::writing ? "BEGIN IMMEDIATE" : "BEGIN").run();
}

Transaction::~Transaction() {
  // After some errors SQLite has rolled back by itself.
  if (!_database.isInTransaction()) return;
  try {
    _database.statement("ROLLBACK").run();
  } catch (const DatabaseError&) {
    // The error that led here is on its way already. What the file holds of an unfinished
    // transaction is rolled back when it is next read.
  }
}

void Transaction::commit() {
  _database.statement("COMMIT").run();
}

}  // namespace tidemar
