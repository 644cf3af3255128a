#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "TidemarKit/Store/Folder.h"

namespace tidemar {
class Database;
}

/// The statements on the table `folder`, and a folder as one of its rows. All throw
/// `DatabaseError`.
namespace tidemar::FolderRow {

std::vector<Folder> all(Database& database);
std::optional<Folder> withID(Database& database, std::int64_t id);
std::optional<Folder> withPath(Database& database, const std::string& path);

/// Answers the id of the new row: the folder's own where it has one.
std::int64_t insert(Database& database, const Folder& folder);

/// Answers whether there was a row of the folder's id.
bool update(Database& database, const Folder& folder);
bool remove(Database& database, std::int64_t id);

}  // namespace tidemar::FolderRow
