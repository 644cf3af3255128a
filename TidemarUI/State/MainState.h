#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "TidemarCore/TemporarySettings.h"
#include "TidemarUI/State/FolderPreview.h"
#include "TidemarUI/State/MenuBarState.h"

namespace tidemar {

/// A folder in the main window: its row in the sidebar and its detail screen.
struct MainFolder {
  std::int64_t id = 0;           ///< The folder's row id.
  std::string name;              ///< The last component of the path, as text.
  std::string path;              ///< In the file system's bytes.
  bool isTemporary = false;      ///< It carries the tag.
  bool isProtectedRoot = false;  ///< It is never cleared.
  bool isReadable = false;       ///< It could be read.
  std::string distanceToGoing;   ///< How far it is from losing something.
  TemporarySettings settings;
  FolderPreview preview;

  friend bool operator==(const MainFolder&, const MainFolder&) = default;
};

/// Everything that the main window shows.
struct MainState {
  MenuBarState overview;
  std::vector<MainFolder> folders;  ///< Temporary or not, in the order of the reports.

  friend bool operator==(const MainState&, const MainState&) = default;
};

/// A row of the sidebar: a folder's, or the overview's.
struct MainSelection {
  std::optional<std::int64_t> folderID;  ///< None for the overview.

  static MainSelection folder(std::int64_t id) { return {id}; }
  static MainSelection overview() { return {}; }

  friend auto operator<=>(const MainSelection&, const MainSelection&) = default;
};

/// Builds the state, with the arguments of `menuBarState`. A folder without a row id gets no row.
MainState mainState(std::span<const FolderReport> reports, std::span<const JournalEntry> journal,
                    std::int64_t freeSpace, bool isFinderExtensionOff, Date now,
                    const Formats& formats, const std::string& bin);

/// The folder whose detail screen is shown; null for the overview, which also stands in for no
/// selection and for a folder that is gone. Borrowed from the state.
const MainFolder* shownFolder(const MainState& state,
                              const std::optional<MainSelection>& selection);

/// The folder that the button "minus" removes; none disables it.
std::optional<std::int64_t> removableFolderID(const std::optional<MainSelection>& selection);

/// Which of its blocks the overview shows beside its two headlines.
struct OverviewBlocks {
  bool hasInvitation = false;  ///< It stands alone, without the headlines.
  bool hasForecast = false;
  bool hasRecentRuns = false;

  friend bool operator==(const OverviewBlocks&, const OverviewBlocks&) = default;
};

OverviewBlocks overviewBlocks(const MainState& state);

}  // namespace tidemar
