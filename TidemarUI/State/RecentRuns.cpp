#include "TidemarUI/State/RecentRuns.h"

#include <algorithm>
#include <functional>
#include <unordered_map>
#include <utility>

#include "TidemarUI/State/Counts.h"
#include "TidemarUI/State/PathName.h"

namespace tidemar {
namespace {

constexpr std::size_t maxRuns = 3;

struct RunKey {
  std::int64_t folderID = 0;
  Date performedAt;

  friend bool operator==(const RunKey&, const RunKey&) = default;
};

struct RunKeyHash {
  std::size_t operator()(const RunKey& key) const noexcept {
    return std::hash<Date>{}(key.performedAt) * 31 + std::hash<std::int64_t>{}(key.folderID);
  }
};

using FolderNames = std::unordered_map<std::int64_t, std::string>;

struct Run {
  RunKey key;
  std::vector<const JournalEntry*> entries;
};

std::vector<Run> runsOf(std::span<const JournalEntry> journal) {
  std::vector<Run> runs;
  std::unordered_map<RunKey, std::size_t, RunKeyHash> places;
  for (const JournalEntry& entry : journal) {
    const RunKey key{entry.folderID, entry.performedAt};
    const auto [place, isNew] = places.try_emplace(key, runs.size());
    if (isNew) runs.push_back({key, {}});
    runs[place->second].entries.push_back(&entry);
  }
  return runs;
}

std::string summaryText(bool hasDeleted, bool hasPending, const std::string& count,
                        const std::string& bin) {
  if (hasDeleted) return count + " deleted permanently";
  if (!hasPending) return count + " put back";
  return count + " to the " + bin;
}

RecentRun recentRun(const Run& run, const FolderNames& names, const Formats& formats,
                    const std::string& bin) {
  RecentRun row;
  bool hasDeleted = false;
  bool hasPending = false;
  for (const JournalEntry* entry : run.entries) {
    if (entry->id) row.journalEntryIDs.push_back(*entry->id);
    hasDeleted = hasDeleted || entry->disposal == Disposal::delete_;
    hasPending = hasPending || !entry->undoneAt;
  }
  if (row.journalEntryIDs.empty()) return row;

  const std::string count = countedItems(static_cast<std::int64_t>(run.entries.size()));
  const auto name = names.find(run.key.folderID);
  row.id = row.journalEntryIDs.front();
  row.summary = summaryText(hasDeleted, hasPending, count, bin);
  row.detail = (name == names.end() ? "Removed folder" : name->second) + " · " +
               formats.timeOfDay(run.key.performedAt);
  row.canPutBack = hasPending && !hasDeleted;
  row.putBackLabel = "Put " + count + " back";
  return row;
}

}  // namespace

std::vector<RecentRun> recentRuns(std::span<const JournalEntry> journal,
                                  std::span<const FolderReport> reports, const Formats& formats,
                                  const std::string& bin) {
  FolderNames names;
  for (const FolderReport& report : reports) {
    if (report.folder.id) names.emplace(*report.folder.id, nameOfPath(report.folder.path));
  }
  std::vector<Run> runs = runsOf(journal);
  std::ranges::stable_sort(runs, std::ranges::greater{},
                           [](const Run& run) { return run.key.performedAt; });
  if (runs.size() > maxRuns) runs.resize(maxRuns);

  std::vector<RecentRun> rows;
  for (const Run& run : runs) {
    RecentRun row = recentRun(run, names, formats, bin);
    if (!row.journalEntryIDs.empty()) rows.push_back(std::move(row));
  }
  return rows;
}

}  // namespace tidemar
