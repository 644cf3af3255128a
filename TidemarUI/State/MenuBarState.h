#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "Platform/Locale/Formats.h"
#include "TidemarKit/FolderReport.h"
#include "TidemarKit/Store/JournalEntry.h"
#include "TidemarUI/State/ForecastGroup.h"
#include "TidemarUI/State/RecentRuns.h"

namespace tidemar {

/// A folder's row in the popover.
struct FolderSummary {
  std::int64_t id = 0;          ///< The folder's row id.
  std::string path;             ///< In the file system's bytes.
  std::string name;             ///< The last component of the path, as text.
  std::string rules;            ///< Its rules in one line; the row's tooltip.
  std::string distanceToGoing;  ///< How far it is from losing something.
  std::string place = {};       ///< The path as text where another row has this name, else empty.

  friend bool operator==(const FolderSummary&, const FolderSummary&) = default;
};

/// Everything that the popover shows, and the overview of the main window too.
struct MenuBarState {
  std::string headline;
  std::string subheadline;
  bool isFinderExtensionOff = false;
  std::vector<ForecastGroup> forecast;  ///< Of all Temporary folders together.
  std::vector<FolderSummary> folders;   ///< In the order of the reports.
  std::vector<RecentRun> recentRuns;    ///< At most three.

  friend bool operator==(const MenuBarState&, const MenuBarState&) = default;
};

/// Builds the state out of the folders that are Temporary or can't be read; a folder that lost its
/// tag drops out. `freeSpace` is in bytes. A folder without a row id counts, but gets no row.
MenuBarState menuBarState(std::span<const FolderReport> reports,
                          std::span<const JournalEntry> journal, std::int64_t freeSpace,
                          bool isFinderExtensionOff, Date now, const Formats& formats,
                          const std::string& bin);

/// The popover's first line.
std::string menuBarHeadline(std::span<const FolderReport> reports, Date now,
                            const Formats& formats);

/// What the icon's own menu says of the popover, for desktops that open nothing else.
struct TrayMenuState {
  std::string headline = {};
  std::string putBack = {};  ///< Offers to bring back the latest run; empty where none can be.
  std::vector<std::int64_t> journalEntryIDs = {};  ///< That run's.

  friend bool operator==(const TrayMenuState&, const TrayMenuState&) = default;
};

/// The run is one of those that the popover shows.
TrayMenuState trayMenuState(std::span<const FolderReport> reports,
                            std::span<const JournalEntry> journal, Date now, const Formats& formats,
                            const std::string& bin);

/// Which of its blocks the popover shows beside headline and footer.
struct MenuBarBlocks {
  bool hasExtensionWarning = false;
  bool hasInvitation = false;
  bool hasForecast = false;
  bool hasFolders = false;
  bool hasRecentRuns = false;

  friend bool operator==(const MenuBarBlocks&, const MenuBarBlocks&) = default;
};

MenuBarBlocks menuBarBlocks(const MenuBarState& state);

}  // namespace tidemar
