#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TidemarCore/Date.h"
#include "TidemarCore/Item.h"
#include "TidemarKit/Store/Folder.h"
#include "TidemarKit/Store/JournalEntry.h"

namespace tidemar::testing {

/// An item of the folder "/f", its freshness in seconds since 1970.
inline Item item(std::string_view name, std::optional<double> freshness, std::int64_t size = 0) {
  return {FileURL("/f").appendingPathComponent(name),
          freshness ? std::optional(Date{*freshness}) : std::nullopt, size};
}

/// The names of what holds an `item` each, in order, joined by a blank.
template <class Element>
std::string namesOf(const std::vector<Element>& elements) {
  std::string result;
  for (const Element& element : elements) {
    if (!result.empty()) result += ' ';
    result += element.item->url.lastPathComponent();
  }
  return result;
}

inline Folder folderAt(const std::string& path, double createdAt = 1000) {
  Folder folder;
  folder.bookmark = "bookmark";
  folder.path = path;
  folder.createdAt = Date{createdAt};
  folder.lastRunAt = Date{createdAt};
  return folder;
}

inline JournalEntry entryOf(const Folder& folder, const std::string& name,
                            double performedAt = 2000) {
  JournalEntry entry;
  entry.folderID = folder.id.value();
  entry.name = name;
  entry.size = 12;
  entry.reasons = {Rule::age};
  entry.performedAt = Date{performedAt};
  return entry;
}

/// The instant at which clocks in UTC show this.
constexpr Date utc(int year, unsigned month, unsigned day, int hour = 0, int minute = 0,
                   double second = 0) {
  const std::chrono::sys_days date =
      std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day);
  return {static_cast<double>(date.time_since_epoch().count()) * 86400.0 + hour * 3600.0 +
          minute * 60.0 + second};
}

}  // namespace tidemar::testing
