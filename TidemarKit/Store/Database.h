#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <sys/types.h>

#include "TidemarKit/Store/Statement.h"

struct sqlite3;

namespace tidemar {

/// One connection to a database, with foreign keys on and all else as SQLite has it, such as the
/// rollback journal. Used by one thread at a time. Every operation throws `DatabaseError`.
class Database {
 public:
  /// Opens a fresh database in memory.
  Database();

  /// Opens the file, made empty and readable by its owner alone where nothing lies yet. Throws for
  /// a file or a directory that can't be written, too. A statement that meets the lock of another
  /// program waits for it, up to `patience`.
  Database(const std::string& path, std::chrono::milliseconds patience);

  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  /// The file that is open, without links; empty for a database in memory.
  std::string file() const;

  /// Throws where the open file no longer is the one at the path by which it was opened: what is
  /// written to it then won't be read again.
  void requireInPlace() const;

  /// Throws where the file itself, apart from its journal, can't be written just now. Changes
  /// nothing that it says. Call it inside an exclusive transaction.
  void requireWritableFile();

  /// Lends the prepared statement of this text, kept from its last use where it isn't lent already.
  Statement statement(std::string_view sql);

  /// Carries out statements that are needed once and have neither parameters nor rows.
  void execute(const std::string& sql);

  /// A number that is another one after each write of another connection to the file, and that
  /// writes of this one leave alone.
  std::int64_t otherConnectionsVersion();

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

  /// Which file a path leads to.
  struct Identity {
    dev_t device = 0;
    ino_t inode = 0;

    friend bool operator==(const Identity&, const Identity&) = default;
  };

  static std::optional<Identity> identityAt(const std::string& path);
  static int waitForOthers(void* database, int earlierWaits);

  void open(const std::string& name);
  void rememberPlace(const std::string& path);

  std::unique_ptr<sqlite3, Closer> _connection;
  std::string _path;  ///< Absolute, as it was given; empty for a database in memory.
  Identity _identity;
  std::chrono::milliseconds _patience{0};
  std::chrono::steady_clock::time_point _endOfPatience;

  /// Every statement prepared so far by its text; empty while it is lent.
  std::map<std::string, StatementHandle, std::less<>> _statements;
};

}  // namespace tidemar
