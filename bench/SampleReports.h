#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "TidemarCore/Forecast.h"
#include "TidemarCore/RemovalPlanning.h"
#include "TidemarKit/FolderReport.h"

namespace tidemar {

inline constexpr Date sampleNow{1794787200};

/// So many Temporary folders of so many items each, whose ages are spread evenly over `days`,
/// planned by the rules.
inline std::vector<FolderReport> sampleReports(int folderCount, int itemCount,
                                               const TemporarySettings& settings, double days) {
  std::vector<FolderReport> reports;
  reports.reserve(static_cast<std::size_t>(folderCount));
  for (int folder = 0; folder < folderCount; ++folder) {
    const FileURL url("/home/ada/Documents/Projects/folder " + std::to_string(folder));
    EntryURLs urls(url);
    std::vector<Item> items;
    for (std::int64_t item = 0; item < itemCount; ++item) {
      const double age =
          days * static_cast<double>(item * 7919 % itemCount) / static_cast<double>(itemCount);
      items.push_back({urls.make("Screenshot " + std::to_string(item) + ".png"),
                       sampleNow - age * secondsPerDay, 40'000});
    }
    const FolderSnapshot snapshot{
        .isTagged = true, .isProtectedRoot = false, .items = std::move(items)};
    FolderReport report;
    report.folder.id = folder;
    report.folder.path = url.path();
    report.folder.settings = settings;
    FolderStatus status;
    status.url = url;
    status.isTagged = true;
    status.dueNow = removalsDueNow(snapshot, settings,
                                   {.now = sampleNow,
                                    .availableCapacity = 1'000'000'000'000,
                                    .totalCapacity = 2'000'000'000'000,
                                    .bootTime = sampleNow,
                                    .lastRunAt = sampleNow});
    status.upcoming = upcomingRemovals(snapshot, settings);
    status.items = snapshot.items;
    report.status = std::move(status);
    reports.push_back(std::move(report));
  }
  return reports;
}

inline TemporarySettings sampleSettings(std::int64_t maxAgeDays, bool emptyOnRestart) {
  TemporarySettings settings;
  settings.maxAgeDays = maxAgeDays;
  settings.emptyOnRestart = emptyOnRestart;
  return settings;
}

}  // namespace tidemar
