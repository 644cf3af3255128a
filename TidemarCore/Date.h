#pragma once

#include <compare>
#include <functional>

namespace tidemar {

/// An absolute instant: seconds since 1970-01-01 00:00 UTC, without leap seconds. Carries no time
/// zone and no calendar.
struct Date {
  double secondsSince1970 = 0;

  friend auto operator<=>(const Date&, const Date&) = default;
};

inline Date operator+(Date date, double seconds) {
  return {date.secondsSince1970 + seconds};
}
inline Date operator-(Date date, double seconds) {
  return {date.secondsSince1970 - seconds};
}

/// The day of the rules: exactly this many seconds, whatever a calendar says.
inline constexpr double secondsPerDay = 86400.0;

}  // namespace tidemar

template <>
struct std::hash<tidemar::Date> {
  std::size_t operator()(tidemar::Date date) const noexcept {
    return std::hash<double>{}(date.secondsSince1970);
  }
};
