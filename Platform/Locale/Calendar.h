#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "TidemarCore/Date.h"

namespace tidemar {

/// One day of a time zone, from its first instant up to the first instant of the next day. It is
/// not always 24 hours long, and where the zone skips midnight it doesn't begin at 0:00.
struct DayInterval {
  Date start;
  Date end;

  bool contains(Date date) const noexcept { return start <= date && date < end; }

  friend bool operator==(const DayInterval&, const DayInterval&) = default;
};

/// Days as a person in one time zone counts them: from midnight to midnight of the wall clock,
/// whatever daylight saving does in between. An immutable value; copies are cheap, and any thread
/// may use one.
class Calendar {
 public:
  /// The zone by its IANA name, such as "Europe/Berlin". A name that isn't known gives UTC.
  explicit Calendar(std::string_view timeZoneIdentifier);

  /// How many midnights lie between two dates: 0 on one day, 1 from any hour of a day to any hour
  /// of the next, negative when `to` is on an earlier day. None where a date is not a number or
  /// lies beyond what can be counted.
  std::optional<std::int64_t> dayDifference(Date from, Date to) const;

  /// The day on which a date lies, or the one that many days later (earlier, if negative). None
  /// where there is no such day.
  std::optional<DayInterval> day(Date date, std::int64_t daysLater = 0) const;

 private:
  class Zone;
  std::shared_ptr<const Zone> _zone;
};

/// The name of the time zone that this system is set to now: $TZ, or else the system's file.
/// Asked anew at each call, since a traveller changes it under a running program.
std::string currentTimeZoneIdentifier();

}  // namespace tidemar
