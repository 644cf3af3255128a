#include "TidemarKit/Store/Database.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <system_error>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/Text.h"
#include "TidemarCore/FileURL.h"
#include "TidemarKit/Store/LastDatabaseError.h"

namespace tidemar {
namespace {

using namespace std::chrono_literals;

/// What every database begins with.
constexpr std::string_view magic("SQLite format 3\0", 16);

DatabaseError failure(const std::string& operation, const std::string& path, int code,
                      const std::string& reason) {
  return {code,
          "Couldn't " + operation + " the database “" + displayText(path) + "”: " + reason + "."};
}

[[noreturn]] void failOpening(const std::string& path, int code, int systemCode) {
  throw failure("open", path, code, std::generic_category().message(systemCode));
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

Database::Database(const std::string& path, std::chrono::milliseconds patience)
    : _patience(patience) {
  if (path.contains('\0')) failOpening(path, SQLITE_CANTOPEN, EINVAL);
  createFileIfMissing(path);
  // A relative path could be one of the names that mean something else to SQLite.
  open(path.starts_with('/') ? path : "./" + path);

  // SQLite opens a file that it may only read without a word, and meets a directory in which it
  // can't make its journal only at the first write: after something was removed.
  if (sqlite3_db_readonly(_connection.get(), "main") != 0) {
    failOpening(path, SQLITE_READONLY, EACCES);
  }
  const FileURL directory = FileURL(file()).deletingLastPathComponent();
  if (faccessat(AT_FDCWD, directory.path().c_str(), W_OK | X_OK, AT_EACCESS) != 0) {
    failOpening(path, SQLITE_READONLY_DIRECTORY, errno);
  }
  rememberPlace(path);
}

void Database::open(const std::string& name) {
  sqlite3* connection = nullptr;
  const int code = sqlite3_open_v2(name.c_str(), &connection,
                                   SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  _connection.reset(connection);
  if (connection == nullptr) failOpening(name, SQLITE_NOMEM, ENOMEM);
  if (code != SQLITE_OK) throw lastDatabaseError(connection, "open");
  sqlite3_busy_handler(connection, waitForOthers, this);
  execute("PRAGMA foreign_keys = ON");
}

/// Short, so that of a program that writes all the time a gap is met.
int Database::waitForOthers(void* database, int earlierWaits) {
  constexpr std::array pauses = {1ms, 2ms, 5ms, 10ms};
  auto& self = *static_cast<Database*>(database);
  const auto now = std::chrono::steady_clock::now();
  if (earlierWaits == 0) self._endOfPatience = now + self._patience;
  if (now >= self._endOfPatience) return 0;
  const auto pause = pauses[std::min(static_cast<std::size_t>(earlierWaits), pauses.size() - 1)];
  std::this_thread::sleep_until(std::min(now + pause, self._endOfPatience));
  return 1;
}

std::string Database::file() const {
  const char* name = sqlite3_db_filename(_connection.get(), "main");
  return name != nullptr ? name : "";
}

std::optional<Database::Identity> Database::identityAt(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  return Identity{status.st_dev, status.st_ino};
}

void Database::rememberPlace(const std::string& path) {
  _path = std::filesystem::absolute(path).string();
  // Of the open file SQLite knows the inode alone, which a file of another drive can have too.
  int hasMoved = 1;
  sqlite3_file_control(_connection.get(), "main", SQLITE_FCNTL_HAS_MOVED, &hasMoved);
  const auto identity = identityAt(_path);
  if (hasMoved != 0 || !identity) failOpening(path, SQLITE_READONLY_DBMOVED, ENOENT);
  _identity = *identity;
}

void Database::requireInPlace() const {
  if (_path.empty() || identityAt(_path) == _identity) return;
  throw failure("write to", _path, SQLITE_READONLY_DBMOVED,
                "it was moved away or replaced while Tidemar had it open");
}

void Database::requireWritableFile() {
  if (_path.empty()) return;
  // By SQLite's own descriptor: closing another one of the same file would drop its locks.
  sqlite3_file* opened = nullptr;
  sqlite3_file_control(_connection.get(), "main", SQLITE_FCNTL_FILE_POINTER,
                       static_cast<void*>(&opened));
  const int code =
      opened->pMethods->xWrite(opened, magic.data(), static_cast<int>(magic.size()), 0);
  if (code == SQLITE_OK) return;
  int systemCode = 0;
  sqlite3_file_control(_connection.get(), "main", SQLITE_FCNTL_LAST_ERRNO, &systemCode);
  // Of a full disk SQLite drops the system's word, since its own says it.
  throw failure(
      "write to", _path, code,
      systemCode == 0 ? sqlite3_errstr(code) : std::generic_category().message(systemCode));
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

std::int64_t Database::otherConnectionsVersion() {
  Statement question = statement("PRAGMA data_version");
  question.step();
  return question.row().integer(0);
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
