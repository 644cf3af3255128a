#pragma once

#include <exception>
#include <optional>
#include <vector>

#include "TidemarCore/Item.h"
#include "TidemarKit/FolderReport.h"
#include "TidemarKit/Store/JournalEntry.h"

namespace tidemar {

/// An item that a run could not remove, or not record, and why.
struct RemovalFailure {
  Item item;  ///< As it was planned.
  std::exception_ptr error;
};

/// What a run did.
struct RunResult {
  std::vector<JournalEntry> journal;      ///< What was removed, in that order, as stored.
  std::vector<RemovalFailure> failures;   ///< In the order of the attempts.
  std::optional<FolderReport> untouched;  ///< The folder as it was read, if nothing was to go.
};

}  // namespace tidemar
