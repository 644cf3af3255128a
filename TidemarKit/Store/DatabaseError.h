#pragma once

#include <stdexcept>
#include <string>

namespace tidemar {

/// A failure of the database: SQLite's result code and message.
class DatabaseError : public std::runtime_error {
 public:
  DatabaseError(int code, const std::string& message) : std::runtime_error(message), _code(code) {}

  /// SQLite's primary or extended result code.
  int code() const noexcept { return _code; }

 private:
  int _code;
};

/// An update met no row.
class RecordNotFound : public DatabaseError {
 public:
  using DatabaseError::DatabaseError;
};

}  // namespace tidemar
