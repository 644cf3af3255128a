#include "TidemarUI/State/MenuBarState.h"

#include <map>

#include "Platform/Text.h"
#include "TidemarUI/State/Counts.h"
#include "TidemarUI/State/FolderTexts.h"
#include "TidemarUI/State/ForecastGroups.h"
#include "TidemarUI/State/Headlines.h"
#include "TidemarUI/State/PathName.h"

namespace tidemar {
namespace {

std::string headlineText(std::span<const FolderStatus* const> statuses, Date now,
                         const Calendar& calendar) {
  std::int64_t dueNowCount = 0;
  for (const FolderStatus* status : statuses)
    dueNowCount += static_cast<std::int64_t>(status->dueNow.size());
  return forecastHeadline(dueNowCount, [&](std::int64_t distance) {
    return countOnDay(distance, statuses, now, calendar);
  });
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

MenuBarState menuBarState(std::span<const FolderReport> reports,
                          std::span<const JournalEntry> journal, std::int64_t freeSpace,
                          bool isFinderExtensionOff, Date now, const Formats& formats,
                          const std::string& bin) {
  MenuBarState state;
  std::int64_t activeCount = 0;
  std::vector<const FolderStatus*> statuses;
  std::vector<ForecastFolder> forecastFolders;
  for (const FolderReport& report : reports) {
    if (report.status && !report.status->isTagged) continue;
    const Folder& folder = report.folder;
    ++activeCount;
    if (report.status) {
      statuses.push_back(&*report.status);
      forecastFolders.push_back({folder.settings, *report.status, report.left});
    }
    if (folder.id) {
      state.folders.push_back({.id = *folder.id,
                               .path = folder.path,
                               .name = nameOfPath(folder.path),
                               .rules = rulesText(folder.settings, formats, bin),
                               .distanceToGoing = distanceText(report, now, formats)});
    }
  }
  addPlaces(state.folders);
  state.headline = activeCount == 0 ? "No Temporary folders yet"
                                    : headlineText(statuses, now, formats.calendar());
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
