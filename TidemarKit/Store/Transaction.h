#pragma once

#include <cstdint>

namespace tidemar {

class Database;

/// A transaction for one scope: rolled back at its end unless it was committed.
class Transaction {
 public:
  enum class Kind : std::uint8_t {
    reading,  ///< Sees one state of the database throughout.
    writing,  ///< Takes the right to write at once, so that it can't be lost to another half-way.
    trial,    ///< Takes all that a commit would take: no other program reads or writes meanwhile.
  };

  /// Throws `DatabaseError`, as `commit` does.
  Transaction(Database& database, Kind kind);
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  ~Transaction();

  void commit();
  void rollBack();

 private:
  Database& _database;
};

}  // namespace tidemar
