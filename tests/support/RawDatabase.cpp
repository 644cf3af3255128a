#include "support/RawDatabase.h"

#include <memory>
#include <stdexcept>

#include <sqlite3.h>

namespace tidemar::testing {

std::vector<std::string> runSQL(const std::string& path, const std::string& sql) {
  sqlite3* opened = nullptr;
  sqlite3_open(path.c_str(), &opened);
  const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> connection(opened, sqlite3_close);

  std::vector<std::string> rows;
  const auto addRow = [](void* result, int count, char** values, char**) {
    std::string row;
    for (int i = 0; i < count; ++i) {
      if (i > 0) row += '|';
      row += values[i] != nullptr ? values[i] : "NULL";
    }
    static_cast<std::vector<std::string>*>(result)->push_back(row);
    return 0;
  };
  if (sqlite3_exec(connection.get(), sql.c_str(), addRow, &rows, nullptr) != SQLITE_OK) {
    throw std::runtime_error(sqlite3_errmsg(connection.get()));
  }
  return rows;
}

}  // namespace tidemar::testing
