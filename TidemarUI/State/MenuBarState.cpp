#include "TidemarUI/State/MenuBarState.h"

#include <algorithm>
#include <map>

#include "Platform/Text.h"
#include "TidemarUI/State/Counts.h"
#include "TidemarUI/State/FolderTexts.h"
#include "TidemarUI/State/ForecastGroups.h"
#include "TidemarUI/State/Headlines.h"
#include "TidemarUI/State/PathName.h"

namespace tidemar {
namespace {

/// A folder that lost its tag is none of ours any more.
bool isActive(const FolderReport& report) {
  return !report.status || report.status->isTagged;
}

/// Says where those folders are that one can't tell apart by their names.
void addPlaces(std::vector<FolderSummary>& folders) {
  std::map<std::string, int> counts;
  for (const FolderSummary& folder : folders)
    ++counts[folder.name];
  for (FolderSummary& folder : folders) {
    if (counts[folder.name] > 1) folder.place = displayText(folder.path);
  }
}

}  // namespace

std::string menuBarHeadline(std::span<const FolderReport> reports, Date now,
                            const Formats& formats) {
  if (std::ranges::none_of(reports, isActive)) return "No Temporary folders yet";
  std::int64_t dueNowCount = 0;
  std::vector<const FolderStatus*> statuses;
  for (const FolderReport& report : reports) {
    if (!report.status || !isActive(report)) continue;
    statuses.push_back(&*report.status);
    dueNowCount += static_cast<std::int64_t>(report.status->dueNow.size());
  }
  return forecastHeadline(dueNowCount, [&](std::int64_t distance) {
    return countOnDay(distance, statuses, now, formats.calendar());
  });
}

TrayMenuState trayMenuState(std::span<const FolderReport> reports,
                            std::span<const JournalEntry> journal, Date now, const Formats& formats,
                            const std::string& bin) {
  TrayMenuState state{.headline = menuBarHeadline(reports, now, formats)};
  const std::vector<RecentRun> runs = recentRuns(journal, reports, formats, bin);
  const auto run = std::ranges::find_if(runs, &RecentRun::canPutBack);
  if (run == runs.end()) return state;
  state.putBack = run->putBackLabel + " · " + run->detail;
  state.journalEntryIDs = run->journalEntryIDs;
  return state;
}

MenuBarState menuBarState(std::span<const FolderReport> reports,
                          std::span<const JournalEntry> journal, std::int64_t freeSpace,
                          bool isFinderExtensionOff, Date now, const Formats& formats,
                          const std::string& bin) {
  MenuBarState state;
  std::int64_t activeCount = 0;
  std::vector<ForecastFolder> forecastFolders;
  for (const FolderReport& report : reports) {
    if (!isActive(report)) continue;
    const Folder& folder = report.folder;
    ++activeCount;
    if (report.status) forecastFolders.push_back({folder.settings, *report.status, report.left});
    if (folder.id) {
      state.folders.push_back({.id = *folder.id,
                               .path = folder.path,
                               .name = nameOfPath(folder.path),
                               .rules = rulesText(folder.settings, formats, bin),
                               .distanceToGoing = distanceText(report, now, formats)});
    }
  }
  addPlaces(state.folders);
  state.headline = menuBarHeadline(reports, now, formats);
  state.subheadline =
      countedFolders(activeCount) + " · " + formats.byteCountText(freeSpace) + " free";
  state.isFinderExtensionOff = isFinderExtensionOff;
  state.forecast = forecastGroups(forecastFolders, now, formats, bin);
  state.recentRuns = recentRuns(journal, reports, formats, bin);
  return state;
}

MenuBarBlocks menuBarBlocks(const MenuBarState& state) {
  const bool hasFolders = !state.folders.empty();
  return {.hasExtensionWarning = state.isFinderExtensionOff,
          .hasInvitation = !hasFolders,
          .hasForecast = hasFolders && !state.forecast.empty(),
          .hasFolders = hasFolders,
          .hasRecentRuns = hasFolders && !state.recentRuns.empty()};
}

}  // namespace tidemar
