#pragma once

#include "TidemarKit/Store/DatabaseMigrator.h"

namespace tidemar {

/// All migrations of the store's tables, oldest first. One that was ever released doesn't change;
/// later changes of the schema are migrations of their own.
DatabaseMigrator storeMigrator();

}  // namespace tidemar
