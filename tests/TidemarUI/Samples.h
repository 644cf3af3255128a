#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Locale/Formats.h"
#include "TidemarKit/FolderReport.h"

namespace tidemar::testing {

/// American English in UTC.
inline Formats sampleFormats() {
  return Formats("en_US", "UTC");
}

inline Item sampleItem(const std::string& name, std::int64_t size = 1000) {
  return {FileURL("/home/ada/Downloads/" + name), Date{0}, size};
}

inline Removal due(const std::string& name, std::int64_t size = 1000) {
  return {sampleItem(name, size), {Rule::age}};
}

inline Upcoming going(const std::string& name, Date date, std::int64_t size = 1000) {
  return {sampleItem(name, size), date};
}

/// Those of a new folder with every rule off.
inline TemporarySettings noRules() {
  TemporarySettings settings;
  settings.maxAgeDays = std::nullopt;
  return settings;
}

inline TemporarySettings deleting(TemporarySettings settings = {}) {
  settings.disposal = Disposal::delete_;
  return settings;
}

inline TemporarySettings clearingOnRestart(TemporarySettings settings = {}) {
  settings.emptyOnRestart = true;
  return settings;
}

/// What was read of a tagged folder. Its items are those named, in this order, and nothing else.
inline FolderStatus taggedStatus(std::vector<Removal> dueNow, std::vector<Upcoming> upcoming,
                                 std::vector<Item> otherItems = {}) {
  FolderStatus status;
  status.isTagged = true;
  for (const Removal& removal : dueNow)
    status.items.push_back(removal.item);
  for (const Upcoming& element : upcoming)
    status.items.push_back(element.item);
  for (Item& item : otherItems)
    status.items.push_back(std::move(item));
  status.dueNow = std::move(dueNow);
  status.upcoming = std::move(upcoming);
  return status;
}

inline FolderReport sampleReport(std::optional<std::int64_t> id, std::optional<FolderStatus> status,
                                 TemporarySettings settings = {},
                                 std::string path = "/home/ada/Downloads") {
  FolderReport report;
  report.folder.id = id;
  report.folder.path = std::move(path);
  report.folder.settings = settings;
  report.status = std::move(status);
  return report;
}

}  // namespace tidemar::testing
