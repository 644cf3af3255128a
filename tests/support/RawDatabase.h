#pragma once

#include <string>
#include <vector>

namespace tidemar::testing {

/// Runs SQL on a database file past the program's own layer, without enforcing foreign keys.
/// Answers the rows, their columns joined by "|" and NULL written as such. Throws
/// `std::runtime_error` with SQLite's message.
std::vector<std::string> runSQL(const std::string& path, const std::string& sql);

}  // namespace tidemar::testing
