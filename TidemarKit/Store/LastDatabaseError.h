#pragma once

#include <string_view>

#include "TidemarKit/Store/DatabaseError.h"

struct sqlite3;

namespace tidemar {

/// What the connection reported last, with its extended code, as the sentence "Couldn't {operation}
/// the database “{path}”: {message}." A database in memory has no path in it.
DatabaseError lastDatabaseError(sqlite3* connection, std::string_view operation);

}  // namespace tidemar
