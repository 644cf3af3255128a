#include "TidemarKit/Store/LastDatabaseError.h"

#include <string>
#include <system_error>

#include <sqlite3.h>

#include "Platform/Text.h"

namespace tidemar {

DatabaseError lastDatabaseError(sqlite3* connection, std::string_view operation) {
  const int code = sqlite3_extended_errcode(connection);
  std::string sentence = "Couldn't " + std::string(operation) + " the database";
  const char* path = sqlite3_db_filename(connection, "main");
  if (path != nullptr && *path != '\0') sentence += " “" + displayText(path) + "”";
  sentence += ": " + displayText(sqlite3_errmsg(connection));

  // Of a refused file operation SQLite's own words don't tell the reason.
  const int primary = code & 0xff;
  const int systemCode = sqlite3_system_errno(connection);
  if ((primary == SQLITE_IOERR || primary == SQLITE_CANTOPEN) && systemCode != 0) {
    sentence += " (" + std::generic_category().message(systemCode) + ")";
  }
  return {code, sentence + "."};
}

}  // namespace tidemar
