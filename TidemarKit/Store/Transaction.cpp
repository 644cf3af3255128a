#include "TidemarKit/Store/Transaction.h"

#include <string_view>

#include "TidemarKit/Store/Database.h"
#include "TidemarKit/Store/DatabaseError.h"

namespace tidemar {
namespace {

std::string_view beginning(Transaction::Kind kind) {
  switch (kind) {
    case Transaction::Kind::writing:
      return "BEGIN IMMEDIATE";
    case Transaction::Kind::trial:
      return "BEGIN EXCLUSIVE";
    case Transaction::Kind::reading:
      break;
  }
  return "BEGIN";
}

}  // namespace

Transaction::Transaction(Database& database, Kind kind) : _database(database) {
  _database.statement(beginning(kind)).run();
}

Transaction::~Transaction() {
  // After some errors SQLite has rolled back by itself.
  if (!_database.isInTransaction()) return;
  try {
    rollBack();
  } catch (const DatabaseError&) {
    // The error that led here is on its way already. What the file holds of an unfinished
    // transaction is rolled back when it is next read.
  }
}

void Transaction::commit() {
  _database.statement("COMMIT").run();
}

void Transaction::rollBack() {
  _database.statement("ROLLBACK").run();
}

}  // namespace tidemar
