#include <sqlite3.h>

#include "support/Testing.h"

namespace tidemar::testing {

OtherProgram::OtherProgram(const std::string& path) : _connection(nullptr, sqlite3_close) {
  sqlite3* opened = nullptr;
  sqlite3_open(path.c_str(), &opened);
  _connection.reset(opened);
}

std::vector<std::string> OtherProgram::run(const std::string& sql) {
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
  if (sqlite3_exec(_connection.get(), sql.c_str(), addRow, &rows, nullptr) != SQLITE_OK) {
    throw std::runtime_error(sqlite3_errmsg(_connection.get()));
  }
  return rows;
}

std::vector<std::string> runSQL(const std::string& path, const std::string& sql) {
  return OtherProgram(path).run(sql);
}

}  // namespace tidemar::testing
