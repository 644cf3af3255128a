#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "TidemarKit/Store/Statement.h"

struct sqlite3;

namespace tidemar {

/// One connection to a database, with foreign keys on and all else as SQLite has it: a rollback
/// journal, and a lock held by another process is an error at once. Used by one thread at a time.
/// Every operation throws `DatabaseError`.
class Database {
 public:
  /// Opens a fresh database in memory.
  Database();

  /// Opens the file, made empty and readable by its owner alone where nothing lies yet. Throws for
  /// a file or a directory that can't be written, too.
  explicit Database(const std::string& path);

  /// Lends the prepared statement of this text, kept from its last use where it isn't lent already.
  Statement statement(std::string_view sql);

  /// Carries out statements that are needed once and have neither parameters nor rows.
  void execute(const std::string& sql);

  std::int64_t lastInsertedRowID() const noexcept;

  /// The rows that the last insert, update or delete changed itself, without those that went by a
  /// foreign key.
  std::int64_t changedRowCount() const noexcept;

  /// Whether a transaction was begun and is neither committed nor rolled back.
  bool isInTransaction() const noexcept;

 private:
  struct Closer {
    void operator()(sqlite3* connection) const noexcept;
  };

  void open(const std::string& name);

  std::unique_ptr<sqlite3, Closer> _connection;

  /// Every statement prepared so far by its text; empty while it is lent.
  std::map<std::string, StatementHandle, std::less<>> _statements;
};

}  // namespace tidemar
