#include "TidemarKit/Store/Database.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Text.h"
#include "TidemarCore/FileURL.h"
#include "TidemarKit/Store/LastDatabaseError.h"

namespace tidemar {
namespace {

[[noreturn]] void failOpening(const std::string& path, int code, int systemCode) {
  throw DatabaseError(code, "Couldn't open the database “" + displayText(path.c_str()) +
                                "”: " + std::generic_category().message(systemCode) + ".");
}

/// Made here and not by SQLite, so that there is no moment in which others could read the file.
void createFileIfMissing(const std::string& path) {
  const FileDescriptor created(
      ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!created && errno != EEXIST) failOpening(path, SQLITE_CANTOPEN, errno);
}

}  // namespace

void Database::Closer::operator()(sqlite3* connection) const noexcept {
  sqlite3_close(connection);
}

Database::Database() {
  open(":memory:");
}

Database::Database(const std::string& path) {
  if (path.contains('\0')) failOpening(path, SQLITE_CANTOPEN, EINVAL);
  createFileIfMissing(path);
  // A relative path could be one of the names that mean something else to SQLite.
  open(path.starts_with('/') ? path : "./" + path);

  // SQLite opens a file that it may only read without a word, and meets a directory in which it
  // can't make its journal only at the first write: after something was removed.
  if (sqlite3_db_readonly(_connection.get(), "main") != 0) {
    failOpening(path, SQLITE_READONLY, EACCES);
  }
  const std::string file = sqlite3_db_filename(_connection.get(), "main");
  const FileURL directory = FileURL(file).deletingLastPathComponent();
  if (faccessat(AT_FDCWD, directory.path().c_str(), W_OK | X_OK, AT_EACCESS) != 0) {
    failOpening(path, SQLITE_READONLY_DIRECTORY, errno);
  }
}

void Database::open(const std::string& name) {
  sqlite3* connection = nullptr;
  const int code = sqlite3_open_v2(name.c_str(), &connection,
                                   SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  _connection.reset(connection);
  if (connection == nullptr) failOpening(name, SQLITE_NOMEM, ENOMEM);
  if (code != SQLITE_OK) throw lastDatabaseError(connection, "open");
  execute("PRAGMA foreign_keys = ON");
}

Statement Database::statement(std::string_view sql) {
  auto found = _statements.find(sql);
  if (found == _statements.end()) found = _statements.emplace(sql, nullptr).first;
  StatementHandle& slot = found->second;
  if (slot) return {std::move(slot), slot};

  sqlite3_stmt* prepared = nullptr;
  const int code = sqlite3_prepare_v3(_connection.get(), sql.data(), static_cast<int>(sql.size()),
                                      SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
  if (code != SQLITE_OK) throw lastDatabaseError(_connection.get(), "use");
  return {StatementHandle(prepared), slot};
}

void Database::execute(const std::string& sql) {
  if (sqlite3_exec(_connection.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    throw lastDatabaseError(_connection.get(), "write to");
  }
}

std::int64_t Database::lastInsertedRowID() const noexcept {
  return sqlite3_last_insert_rowid(_connection.get());
}

std::int64_t Database::changedRowCount() const noexcept {
  return sqlite3_changes64(_connection.get());
}

bool Database::isInTransaction() const noexcept {
  return sqlite3_get_autocommit(_connection.get()) == 0;
}

}  // namespace tidemar
