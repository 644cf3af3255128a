#include "TidemarUI/State/TomorrowNotification.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <sstream>

#include "TidemarUI/State/Counts.h"
#include "TidemarUI/State/DayWords.h"
#include "TidemarUI/State/PathName.h"

namespace tidemar {
namespace {

constexpr std::string_view identifierPrefix = "tomorrow.";

}  // namespace

std::optional<TomorrowNotification> tomorrowNotification(const FolderReport& report, Date now,
                                                         const Calendar& calendar,
                                                         const std::string& bin) {
  const Folder& folder = report.folder;
  if (!folder.id || !report.status) return std::nullopt;
  const DayAtDistance tomorrow(1, now, calendar);
  const std::int64_t count = std::ranges::count_if(
      report.status->upcoming,
      [&](const Upcoming& upcoming) { return tomorrow.contains(upcoming.date); });
  if (count == 0) return std::nullopt;

  const std::string what = folder.settings.disposal == Disposal::delete_
                               ? " will be deleted permanently tomorrow."
                               : " will go to the " + bin + " tomorrow.";
  return TomorrowNotification{
      .identifier = std::string(identifierPrefix) + std::to_string(*folder.id),
      .title = nameOfPath(folder.path),
      .body = countedItems(count) + what};
}

bool mayGoTomorrow(const FolderReport& report, Date now) {
  constexpr double longestTwoDays = 3 * secondsPerDay;
  if (!report.status) return false;
  const auto& upcoming = report.status->upcoming;
  const auto next = std::ranges::lower_bound(upcoming, now, {}, &Upcoming::date);
  return next != upcoming.end() && next->date < now + longestTwoDays;
}

std::optional<std::int64_t> folderOfNotification(std::string_view identifier) {
  if (!identifier.starts_with(identifierPrefix)) return std::nullopt;
  const std::string_view digits = identifier.substr(identifierPrefix.size());
  std::int64_t id = 0;
  const auto [end, error] = std::from_chars(digits.begin(), digits.end(), id);
  return error == std::errc() && end == digits.end() ? std::optional(id) : std::nullopt;
}

std::string notificationStampKey(const std::string& identifier) {
  return "notified." + identifier;
}

std::string notificationStamp(Date now) {
  using namespace std::chrono;
  const auto days = static_cast<int>(std::floor(now.secondsSince1970 / secondsPerDay));
  const year_month_day day{sys_days{std::chrono::days{days}}};
  std::ostringstream text;
  text << std::setfill('0') << std::setw(4) << static_cast<int>(day.year()) << '-' << std::setw(2)
       << static_cast<unsigned>(day.month()) << '-' << std::setw(2)
       << static_cast<unsigned>(day.day());
  return text.str();
}

}  // namespace tidemar
