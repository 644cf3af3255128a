#include "Platform/Locale/Calendar.h"

#include <algorithm>
#include <cmath>

#include <unicode/basictz.h>
#include <unicode/timezone.h>

#include "Platform/Locale/UnicodeText.h"

namespace tidemar {
namespace {

// Beyond this many days a double no longer tells one second from the next.
constexpr double furthestDay = 1e11;

// What ICU can take apart into fields; a zone's offset doesn't change beyond it.
constexpr double furthestMillisecond = 1.8e17;

}  // namespace

class Calendar::Zone {
 public:
  explicit Zone(std::string_view identifier)
      : _timeZone(icu::TimeZone::createTimeZone(fromUTF8(identifier))) {}

  /// The number of the wall clock's day, counted from 1970-01-01.
  std::optional<std::int64_t> dayNumber(Date date) const {
    const double utc = date.secondsSince1970;
    if (!(std::abs(utc) < furthestDay * secondsPerDay)) return std::nullopt;
    std::int32_t raw = 0;
    std::int32_t saving = 0;
    UErrorCode error = U_ZERO_ERROR;
    _timeZone->getOffset(clamped(utc * 1000), false, raw, saving, error);
    return static_cast<std::int64_t>(std::floor((utc + (raw + saving) / 1000.0) / secondsPerDay));
  }

  /// The first instant of a day by its number.
  Date start(std::int64_t dayNumber) const {
    const double midnight = static_cast<double>(dayNumber) * secondsPerDay;
    std::int32_t raw = 0;
    std::int32_t saving = 0;
    UErrorCode error = U_ZERO_ERROR;
    // Of a midnight that comes twice the first one counts; one that is skipped, with the offset
    // from before the gap, falls on the end of the day before.
    if (const auto* zone = dynamic_cast<const icu::BasicTimeZone*>(_timeZone.get())) {
      zone->getOffsetFromLocal(clamped(midnight * 1000), UCAL_TZ_LOCAL_FORMER, UCAL_TZ_LOCAL_FORMER,
                               raw, saving, error);
    } else {
      _timeZone->getOffset(clamped(midnight * 1000), true, raw, saving, error);
    }
    return {midnight - (raw + saving) / 1000.0};
  }

 private:
  static double clamped(double milliseconds) {
    return std::clamp(milliseconds, -furthestMillisecond, furthestMillisecond);
  }

  std::unique_ptr<const icu::TimeZone> _timeZone;
};

Calendar::Calendar(std::string_view timeZoneIdentifier)
    : _zone(std::make_shared<const Zone>(timeZoneIdentifier)) {}

std::optional<std::int64_t> Calendar::dayDifference(Date from, Date to) const {
  const auto first = _zone->dayNumber(from);
  const auto second = _zone->dayNumber(to);
  if (!first || !second) return std::nullopt;
  return *second - *first;
}

std::optional<DayInterval> Calendar::day(Date date, std::int64_t daysLater) const {
  auto number = _zone->dayNumber(date);
  if (!number || std::abs(static_cast<double>(daysLater)) > furthestDay) return std::nullopt;
  *number += daysLater;
  return DayInterval{_zone->start(*number), _zone->start(*number + 1)};
}

std::string currentTimeZoneIdentifier() {
  const std::unique_ptr<const icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
  icu::UnicodeString identifier;
  return toUTF8(zone->getID(identifier));
}

}  // namespace tidemar
