#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "TidemarCore/Date.h"
#include "TidemarCore/Disposal.h"
#include "TidemarCore/Rule.h"

namespace tidemar {

/// One item that a run removed: a row of the table `journalEntry`. All entries of one run bear the
/// same `performedAt`.
struct JournalEntry {
  std::optional<std::int64_t> id;  ///< The row id; none until inserted.
  std::int64_t folderID = 0;
  Disposal disposal = Disposal::bin;
  std::string name;  ///< The item's last path component, in the file system's bytes.
  std::optional<std::string>
      binnedPath;         ///< Where the item lies in the Bin; none if it was deleted.
  std::int64_t size = 0;  ///< Bytes, when it went.
  RuleSet reasons;
  Date performedAt;
  std::optional<Date> undoneAt;  ///< When it was put back.

  friend bool operator==(const JournalEntry&, const JournalEntry&) = default;
};

}  // namespace tidemar
