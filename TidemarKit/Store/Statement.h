#pragma once

#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "TidemarCore/Date.h"

struct sqlite3_stmt;

namespace tidemar {

struct StatementFinalizer {
  void operator()(sqlite3_stmt* statement) const noexcept;
};

/// Owns a prepared statement.
using StatementHandle = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;

/// A parameter that is stored as BLOB rather than TEXT.
struct Blob {
  std::string_view bytes;
};

/// The row on which a statement stands, good until its next step. Columns count from 0. A column
/// that doesn't hold the storage type asked for throws `DatabaseError`: nothing is converted.
class Row {
 public:
  explicit Row(sqlite3_stmt* statement) noexcept : _statement(statement) {}

  std::int64_t integer(int column) const;

  /// Of an integer that is 0 or 1.
  bool boolean(int column) const;

  /// The bytes as they stand, which need not be UTF-8.
  std::string text(int column) const;

  std::string blob(int column) const;
  Date date(int column) const;

  /// None for NULL: `row.optional(3, &Row::text)`.
  template <class Value>
  std::optional<Value> optional(int column, Value (Row::*value)(int) const) const {
    if (isNull(column)) return std::nullopt;
    return (this->*value)(column);
  }

 private:
  bool isNull(int column) const;
  void expect(int column, int storageType) const;

  sqlite3_stmt* _statement;
};

/// One use of a prepared statement, lent by its `Database`: it is reset and goes back there at the
/// end of the scope. Every operation throws `DatabaseError`.
class Statement {
 public:
  /// Uses `handle`, and puts it back into `slot` when the use ends.
  Statement(StatementHandle handle, StatementHandle& slot) noexcept;
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  ~Statement();

  /// Gives all parameters their values, in the order of the statement. Values are copied.
  template <class... Values>
  Statement& bind(const Values&... values) {
    int parameter = 0;
    (bindOne(++parameter, values), ...);
    return *this;
  }

  /// Goes to the next row; false where there is none.
  bool step();

  /// Carries out a statement whose rows, if any, don't matter.
  void run();

  Row row() const noexcept { return Row(_handle.get()); }

 private:
  void bindOne(int parameter, std::int64_t value);
  void bindOne(int parameter, std::same_as<bool> auto value) {
    bindOne(parameter, std::int64_t{value});
  }
  void bindOne(int parameter, std::string_view text);
  void bindOne(int parameter, Blob blob);
  void bindOne(int parameter, Date date);
  void bindOne(int parameter, std::nullopt_t null);
  template <class Value>
  void bindOne(int parameter, const std::optional<Value>& value) {
    if (value) {
      bindOne(parameter, *value);
    } else {
      bindOne(parameter, std::nullopt);
    }
  }
  void check(int code) const;

  StatementHandle _handle;
  StatementHandle& _slot;
};

}  // namespace tidemar
