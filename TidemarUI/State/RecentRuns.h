#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "Platform/Locale/Formats.h"
#include "TidemarKit/FolderReport.h"
#include "TidemarKit/Store/JournalEntry.h"

namespace tidemar {

/// One cleaning of one folder, as a row.
struct RecentRun {
  std::int64_t id = 0;                        ///< The first of `journalEntryIDs`.
  std::string summary;                        ///< "3 items to the Bin"
  std::string detail;                         ///< The folder and the time of day.
  std::vector<std::int64_t> journalEntryIDs;  ///< In the journal's order.
  bool canPutBack = false;                    ///< The row offers to bring the items back.
  std::string putBackLabel;                   ///< What that offer is called to a screen reader.

  friend bool operator==(const RecentRun&, const RecentRun&) = default;
};

/// The three newest runs of the journal, newest first. Entries belong to one run if their folder is
/// the same and their `performedAt` exactly the same.
std::vector<RecentRun> recentRuns(std::span<const JournalEntry> journal,
                                  std::span<const FolderReport> reports, const Formats& formats,
                                  const std::string& bin);

}  // namespace tidemar
