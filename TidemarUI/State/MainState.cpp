#include "TidemarUI/State/MainState.h"

#include <algorithm>

#include "TidemarUI/State/FolderTexts.h"
#include "TidemarUI/State/PathName.h"

namespace tidemar {

MainState mainState(std::span<const FolderReport> reports, std::span<const JournalEntry> journal,
                    std::int64_t freeSpace, bool isFinderExtensionOff, Date now,
                    const Formats& formats, const std::string& bin) {
  MainState state;
  state.overview =
      menuBarState(reports, journal, freeSpace, isFinderExtensionOff, now, formats, bin);
  for (const FolderReport& report : reports) {
    const Folder& folder = report.folder;
    const auto& status = report.status;
    if (!folder.id) continue;
    state.folders.push_back({.id = *folder.id,
                             .name = nameOfPath(folder.path),
                             .path = folder.path,
                             .isTemporary = status && status->isTagged,
                             .isProtectedRoot = status && status->isProtectedRoot,
                             .isReadable = status.has_value(),
                             .distanceToGoing = distanceText(report, now, formats),
                             .settings = folder.settings,
                             .preview = folderPreview(report, now, formats, bin)});
  }
  return state;
}

const MainFolder* shownFolder(const MainState& state,
                              const std::optional<MainSelection>& selection) {
  if (!selection || !selection->folderID) return nullptr;
  const auto folder = std::ranges::find(state.folders, *selection->folderID, &MainFolder::id);
  return folder == state.folders.end() ? nullptr : &*folder;
}

std::optional<std::int64_t> removableFolderID(const std::optional<MainSelection>& selection) {
  return selection ? selection->folderID : std::nullopt;
}

OverviewBlocks overviewBlocks(const MainState& state) {
  const bool hasFolders = !state.folders.empty();
  return {.hasInvitation = !hasFolders,
          .hasForecast = hasFolders && !state.overview.forecast.empty(),
          .hasRecentRuns = hasFolders && !state.overview.recentRuns.empty()};
}

}  // namespace tidemar
