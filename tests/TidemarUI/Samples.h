#pragma once

#include "Platform/Locale/Formats.h"
#include "TidemarKit/FolderReport.h"
#include "support/Testing.h"

namespace tidemar::testing {

/// American English in UTC.
inline Formats sampleFormats() {
  return Formats("en_US", "UTC");
}

inline Item sampleItem(const std::string& name, std::int64_t size = 1000) {
  return {FileURL("/home/ada/Downloads/" + name), Date{0}, size};
}

struct GoingItem {
  Item item;
  Date date;
};

inline GoingItem going(const std::string& name, Date date, std::int64_t size = 1000) {
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
inline FolderStatus taggedStatus(const std::vector<Item>& dueNow,
                                 const std::vector<GoingItem>& upcoming,
                                 const std::vector<Item>& otherItems = {}) {
  const auto find = [](const auto& list, const Item& item) {
    return std::ranges::find(list, item.url, &Item::url);
  };
  std::vector<Item> items;
  const auto add = [&](const Item& item) {
    if (find(items, item) == items.end()) items.push_back(item);
  };
  std::ranges::for_each(dueNow, add);
  std::ranges::for_each(upcoming, add, &GoingItem::item);
  std::ranges::for_each(otherItems, add);

  FolderStatus status;
  status.isTagged = true;
  status.items = std::move(items);
  for (const Item& item : dueNow)
    status.dueNow.push_back({find(status.items, item), {Rule::age}});
  for (const GoingItem& element : upcoming)
    status.upcoming.push_back({find(status.items, element.item), element.date});
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
