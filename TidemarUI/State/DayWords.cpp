#include "TidemarUI/State/DayWords.h"

#include <cmath>

namespace tidemar {

std::int64_t dayDistance(Date date, Date now, const Calendar& calendar) {
  return calendar.dayDifference(now, date).value_or(0);
}

std::string dayPhrase(Date date, Date now, const Calendar& calendar) {
  const std::int64_t distance = dayDistance(date, now, calendar);
  if (distance < 1) return "today";
  if (distance == 1) return "tomorrow";
  return "in " + std::to_string(distance) + " days";
}

std::string dayTitle(Date date, Date now, const Formats& formats) {
  const std::int64_t distance = dayDistance(date, now, formats.calendar());
  if (distance < 1) return "Today";
  if (distance == 1) return "Tomorrow";
  return formats.shortDate(date);
}

DayAtDistance::DayAtDistance(std::int64_t distance, Date now, const Calendar& calendar)
    : _distance(distance), _day(calendar.day(now, distance)) {}

bool DayAtDistance::contains(Date date) const {
  // What can't be counted is at distance 0, as `dayDistance` has it.
  if (!_day || !std::isfinite(date.secondsSince1970)) return _distance == 0;
  return _day->contains(date);
}

}  // namespace tidemar
