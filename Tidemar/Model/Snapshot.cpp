#include "Tidemar/Model/Snapshot.h"

#include <exception>
#include <optional>

#include "Tidemar/Model/ApplicationLog.h"
#include "Tidemar/Model/Failures.h"

namespace tidemar {
namespace {

constexpr double journalSeconds = 7 * secondsPerDay;

std::int64_t freeSpaceOfHome(const FileManager& fileManager) {
  try {
    return fileManager.volumeCapacity(fileManager.homeDirectoryForCurrentUser())
        .available.value_or(0);
  } catch (const std::exception&) {
    // An unknown free space is shown as none; the rules read their own.
    return 0;
  }
}

FolderReport readFolder(Engine& engine, const Folder& folder, Date now) {
  FolderReport report{folder, std::nullopt};
  if (!folder.id) return report;
  try {
    report.status = engine.status(*folder.id, now);
  } catch (...) {
    // One folder that can't be read must not hide the others.
    applicationLog().log(LogLevel::error, "Couldn't read folder %lld: %{public}s", *folder.id,
                         textForLog(std::current_exception()));
  }
  return report;
}

/// Whether a report that was read by these rules at this place still holds for a folder.
bool isOf(const Folder& folder, const FolderReport& report) {
  Folder before = report.folder;
  before.lastRunAt = folder.lastRunAt;
  return before == folder;
}

}  // namespace

Snapshot readSnapshot(Engine& engine, const FileManager& fileManager,
                      const std::function<Date()>& currentDate, const RecentReports& recent,
                      const LeftItems& left) {
  const Date since = currentDate() - journalSeconds;
  Snapshot snapshot;
  for (const Folder& folder : engine.store().folders()) {
    const auto known = recent.find(folder.id.value_or(0));
    if (known != recent.end() && isOf(folder, *known->second)) {
      snapshot.reports.push_back({folder, known->second->status});
    } else {
      snapshot.reports.push_back(readFolder(engine, folder, currentDate()));
    }
    if (const auto found = left.find(folder.id.value_or(0)); found != left.end())
      snapshot.reports.back().left = found->second;
  }
  snapshot.journal = engine.store().journalSince(since);
  snapshot.freeSpace = freeSpaceOfHome(fileManager);
  return snapshot;
}

Snapshot withPresentRules(const Snapshot& shown, const Engine& engine, std::int64_t folderID) {
  Snapshot snapshot = shown;
  const std::optional<Folder> row = engine.store().folder(folderID);
  for (FolderReport& report : snapshot.reports) {
    if (!row || report.folder.id != folderID) continue;
    report.folder.settings = row->settings;
    if (!report.status) continue;
    const FolderStatus& read = *report.status;
    report.status = plannedStatus(read.url, {read.isTagged, read.isProtectedRoot, read.items},
                                  row->settings, read.conditions);
  }
  return snapshot;
}

bool isTemporary(const FolderReport& report) noexcept {
  return report.status && report.status->isTagged;
}

std::vector<std::string> temporaryPaths(const Snapshot& snapshot) {
  std::vector<std::string> paths;
  for (const FolderReport& report : snapshot.reports) {
    if (isTemporary(report)) paths.push_back(report.folder.path);
  }
  return paths;
}

}  // namespace tidemar
