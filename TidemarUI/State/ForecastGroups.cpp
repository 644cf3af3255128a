#include "TidemarUI/State/ForecastGroups.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "TidemarCore/SaturatingArithmetic.h"
#include "TidemarUI/State/DayWords.h"
#include "TidemarUI/State/DisposalText.h"
#include "TidemarUI/State/Labels.h"

namespace tidemar {
namespace {

constexpr std::int64_t forecastDays = 7;

/// Finds the day of one date after the other; neighbours mostly share theirs.
class StartOfDay {
 public:
  explicit StartOfDay(const Calendar& calendar) : _calendar(calendar) {}

  Date operator()(Date date) {
    if (!_day || !_day->contains(date)) _day = _calendar.day(date);
    return _day ? _day->start : date;
  }

 private:
  const Calendar& _calendar;
  std::optional<DayInterval> _day;
};

using ReasonsByItem = std::map<FileURL, std::string_view>;

ReasonsByItem reasonsByItem(std::span<const LeftItem> left) {
  ReasonsByItem reasons;
  for (const LeftItem& item : left)
    reasons.emplace(item.url, item.reason);
  return reasons;
}

void addLine(std::string& text, std::string_view line) {
  if (!text.empty()) text += '\n';
  text += line;
}

std::string headingText(const Moment& moment, Date now, const Formats& formats) {
  switch (moment.kind) {
    case Moment::Kind::now:
      return std::string(labels::now);
    case Moment::Kind::day:
      return dayTitle(moment.startOfDay, now, formats);
    case Moment::Kind::restart:
      return "On restart";
  }
  return {};
}

}  // namespace

Date forecastHorizon(Date now, const Calendar& calendar) {
  const auto day = calendar.day(now, forecastDays);
  return day ? day->start : now;
}

std::vector<ForecastEntry> forecastEntries(bool emptyOnRestart, Disposal disposal,
                                           const FolderStatus& status, Date horizon,
                                           const Calendar& calendar) {
  std::vector<ForecastEntry> entries;
  std::vector<bool> isListed(status.items.size());
  const auto add = [&](Moment moment, const Item* item) {
    auto mark = isListed[status.items.indexOf(item)];
    if (!mark) entries.push_back({{disposal, moment}, item});
    mark = true;
  };
  for (const Removal& removal : status.dueNow)
    add(Moment::now(), removal.item);
  StartOfDay startOfDay(calendar);
  for (const Upcoming& upcoming : status.upcoming) {
    if (upcoming.date >= horizon) break;
    add(Moment::day(startOfDay(upcoming.date)), upcoming.item);
  }
  if (emptyOnRestart) {
    for (const Item& item : status.items)
      add(Moment::restart(), &item);
  }
  return entries;
}

std::vector<ForecastGroup> forecastGroups(std::span<const ForecastFolder> folders, Date now,
                                          const Formats& formats, const std::string& bin) {
  struct Content {
    std::vector<FileURL> items;
    std::int64_t size = 0;
    std::string left;
  };
  const Date horizon = forecastHorizon(now, formats.calendar());
  std::map<GroupKey, Content> contents;
  for (const ForecastFolder& folder : folders) {
    const ReasonsByItem reasons = reasonsByItem(folder.left);
    auto group = contents.end();  // Neighbours mostly share theirs.
    for (const ForecastEntry& entry :
         forecastEntries(folder.settings.emptyOnRestart, folder.settings.disposal, folder.status,
                         horizon, formats.calendar())) {
      if (group == contents.end() || group->first != entry.key)
        group = contents.try_emplace(entry.key).first;
      Content& content = group->second;
      content.items.push_back(entry.item->url);
      if (!reasons.empty() && entry.key.moment == Moment::now()) {
        const auto reason = reasons.find(entry.item->url);
        if (reason != reasons.end()) addLine(content.left, reason->second);
      }
      content.size = addingSaturated(content.size, entry.item->size);
    }
  }

  std::vector<ForecastGroup> groups;
  groups.reserve(contents.size());
  for (auto& [key, content] : contents) {
    groups.push_back({.when = headingText(key.moment, now, formats),
                      .action = disposalText(key.disposal, bin),
                      .isPermanent = key.disposal == Disposal::delete_,
                      .isAtRestart = key.moment.kind == Moment::Kind::restart,
                      .items = std::move(content.items),
                      .totalSize = formats.byteCountText(content.size),
                      .left = std::move(content.left)});
  }
  return groups;
}

}  // namespace tidemar
