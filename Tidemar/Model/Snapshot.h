#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "Platform/Files/FileManager.h"
#include "TidemarCore/Date.h"
#include "TidemarKit/Engine/Engine.h"
#include "TidemarKit/FolderReport.h"
#include "TidemarKit/Store/JournalEntry.h"

namespace tidemar {

/// What one reading saw: all that the screens show of the folders.
struct Snapshot {
  std::vector<FolderReport> reports;  ///< In the store's order.
  std::vector<JournalEntry> journal;  ///< Of the last 7 days.
  std::int64_t freeSpace = 0;         ///< Bytes on the home's volume; 0 if unknown.
};

/// What was read of folders a moment ago, by their row ids.
using RecentReports = std::unordered_map<std::int64_t, std::shared_ptr<const FolderReport>>;

/// What the last runs left of what was to go, by the folders' row ids.
using LeftItems = std::unordered_map<std::int64_t, std::vector<LeftItem>>;

/// Reads every folder and the journal, each folder at its own moment, but for those of which a
/// recent report has the same rules and the same place. A folder that can't be read has a report
/// without a status, and the reason is logged. Throws where the rows can't be read. Any thread;
/// takes as long as the disks do.
Snapshot readSnapshot(Engine& engine, const FileManager& fileManager,
                      const std::function<Date()>& currentDate, const RecentReports& recent,
                      const LeftItems& left);

/// The same with one folder's rules as its row has them now, and what they take of what was read of
/// it. Reads no disk but the database's; throws where that can't be read. Any thread.
Snapshot withPresentRules(const Snapshot& shown, const Engine& engine, std::int64_t folderID);

/// Whether a report's folder carries the tag, as far as is known.
bool isTemporary(const FolderReport& report) noexcept;

/// The paths of the folders that carry the tag, in the order of the reports.
std::vector<std::string> temporaryPaths(const Snapshot& snapshot);

}  // namespace tidemar
