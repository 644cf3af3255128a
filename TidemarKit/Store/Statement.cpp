#include "TidemarKit/Store/Statement.h"

#include <utility>

#include <sqlite3.h>

#include "TidemarKit/Store/DatabaseDate.h"
#include "TidemarKit/Store/LastDatabaseError.h"

namespace tidemar {
namespace {

std::string_view nameOfStorageType(int storageType) {
  switch (storageType) {
    case SQLITE_INTEGER:
      return "an integer";
    case SQLITE_FLOAT:
      return "a real number";
    case SQLITE_TEXT:
      return "text";
    case SQLITE_BLOB:
      return "binary data";
    default:
      return "NULL";
  }
}

[[noreturn]] void failColumn(sqlite3_stmt* statement, int column, std::string_view held,
                             std::string_view expected) {
  const char* name = sqlite3_column_name(statement, column);
  std::string sentence = "The database holds ";
  sentence += held;
  sentence += " in the column “";
  sentence += name != nullptr ? name : "?";
  sentence += "”, where ";
  sentence += expected;
  sentence += " is expected.";
  throw DatabaseError(SQLITE_MISMATCH, sentence);
}

}  // namespace

void StatementFinalizer::operator()(sqlite3_stmt* statement) const noexcept {
  sqlite3_finalize(statement);
}

bool Row::isNull(int column) const {
  return sqlite3_column_type(_statement, column) == SQLITE_NULL;
}

void Row::expect(int column, int storageType) const {
  const int held = sqlite3_column_type(_statement, column);
  if (held == storageType) return;
  failColumn(_statement, column, nameOfStorageType(held), nameOfStorageType(storageType));
}

std::int64_t Row::integer(int column) const {
  expect(column, SQLITE_INTEGER);
  return sqlite3_column_int64(_statement, column);
}

bool Row::boolean(int column) const {
  const std::int64_t value = integer(column);
  if (value != 0 && value != 1) failColumn(_statement, column, std::to_string(value), "0 or 1");
  return value == 1;
}

std::string Row::text(int column) const {
  expect(column, SQLITE_TEXT);
  const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(_statement, column));
  if (bytes == nullptr) throw lastDatabaseError(sqlite3_db_handle(_statement), "read");
  return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(_statement, column))};
}

std::string Row::blob(int column) const {
  expect(column, SQLITE_BLOB);
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(_statement, column));
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(_statement, column));
  if (size == 0) return {};
  if (bytes == nullptr) throw lastDatabaseError(sqlite3_db_handle(_statement), "read");
  return {bytes, size};
}

Date Row::date(int column) const {
  return DatabaseDate::date(text(column));
}

Statement::Statement(StatementHandle handle, StatementHandle& slot) noexcept
    : _handle(std::move(handle)), _slot(slot) {}

Statement::~Statement() {
  // What went wrong was thrown by the step; the reset only repeats its code.
  sqlite3_reset(_handle.get());
  sqlite3_clear_bindings(_handle.get());
  _slot = std::move(_handle);
}

bool Statement::step() {
  const int code = sqlite3_step(_handle.get());
  if (code == SQLITE_ROW) return true;
  if (code != SQLITE_DONE) check(code);
  return false;
}

void Statement::run() {
  while (step()) {
  }
}

void Statement::bindOne(int parameter, std::int64_t value) {
  check(sqlite3_bind_int64(_handle.get(), parameter, value));
}

// A null pointer would bind NULL, and a view of nothing may hold one.
void Statement::bindOne(int parameter, std::string_view text) {
  check(sqlite3_bind_text64(_handle.get(), parameter, text.empty() ? "" : text.data(), text.size(),
                            SQLITE_TRANSIENT, SQLITE_UTF8));
}

void Statement::bindOne(int parameter, Blob blob) {
  check(sqlite3_bind_blob64(_handle.get(), parameter, blob.bytes.empty() ? "" : blob.bytes.data(),
                            blob.bytes.size(), SQLITE_TRANSIENT));
}

void Statement::bindOne(int parameter, Date date) {
  bindOne(parameter, std::string_view(DatabaseDate::text(date)));
}

void Statement::bindOne(int parameter, std::nullopt_t) {
  check(sqlite3_bind_null(_handle.get(), parameter));
}

void Statement::check(int code) const {
  if (code == SQLITE_OK) return;
  const bool reads = sqlite3_column_count(_handle.get()) > 0;
  throw lastDatabaseError(sqlite3_db_handle(_handle.get()), reads ? "read" : "write to");
}

}  // namespace tidemar
