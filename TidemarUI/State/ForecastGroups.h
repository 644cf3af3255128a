#pragma once

#include <span>
#include <string>
#include <vector>

#include "Platform/Locale/Formats.h"
#include "TidemarCore/TemporarySettings.h"
#include "TidemarKit/FolderReport.h"
#include "TidemarUI/State/ForecastGroup.h"

namespace tidemar {

/// One folder that takes part in a forecast. Borrows all of it.
struct ForecastFolder {
  const TemporarySettings& settings;
  const FolderStatus& status;
  std::span<const LeftItem> left = {};
};

/// One item and the group in which it stands. Borrows the item from its folder's status.
struct ForecastEntry {
  GroupKey key;
  const Item* item;
};

/// The first date that a forecast leaves out: midnight seven days ahead, whatever the hour of
/// `now`. `now` itself where there is no such date.
Date forecastHorizon(Date now, const Calendar& calendar);

/// What goes out of one folder and when, each item at most once: first what is due, then what goes
/// before the horizon by its day, then, if the restart clears the folder, all other items.
std::vector<ForecastEntry> forecastEntries(bool emptyOnRestart, Disposal disposal,
                                           const FolderStatus& status, Date horizon,
                                           const Calendar& calendar);

/// The forecast of all these folders together, sorted by `GroupKey`. Items of an earlier folder
/// come first within a group.
std::vector<ForecastGroup> forecastGroups(std::span<const ForecastFolder> folders, Date now,
                                          const Formats& formats, const std::string& bin);

}  // namespace tidemar
