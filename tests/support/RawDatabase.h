#pragma once

#include <memory>
#include <string>
#include <vector>

struct sqlite3;

namespace tidemar::testing {

/// Another program that has a database open, past the program's own layer and without enforcing
/// foreign keys. It waits for no lock.
class OtherProgram {
 public:
  explicit OtherProgram(const std::string& path);

  /// Answers the rows, their columns joined by "|" and NULL written as such. Throws
  /// `std::runtime_error` with SQLite's message.
  std::vector<std::string> run(const std::string& sql);

 private:
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> _connection;
};

/// Runs SQL once, as another program.
std::vector<std::string> runSQL(const std::string& path, const std::string& sql);

}  // namespace tidemar::testing
