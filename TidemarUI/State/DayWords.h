#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Platform/Locale/Calendar.h"
#include "Platform/Locale/Formats.h"
#include "TidemarCore/Date.h"

namespace tidemar {

/// The days from the day of `now` to the day of `date`, midnight to midnight: 0 for any hour of
/// today, 1 for any hour of tomorrow, negative for the past. 0 where they can't be counted.
std::int64_t dayDistance(Date date, Date now, const Calendar& calendar);

/// The day within a sentence: "today" (for the past too), "tomorrow", "in {n} days".
std::string dayPhrase(Date date, Date now, const Calendar& calendar);

/// The day as a heading: "Today" (for the past too), "Tomorrow", or its short date.
std::string dayTitle(Date date, Date now, const Formats& formats);

/// Whether dates have one `dayDistance`, for the price of a comparison each.
class DayAtDistance {
 public:
  DayAtDistance(std::int64_t distance, Date now, const Calendar& calendar);

  bool contains(Date date) const;

 private:
  std::int64_t _distance;
  std::optional<DayInterval> _day;
};

}  // namespace tidemar
