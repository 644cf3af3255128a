#pragma once

#include <chrono>

#include "TidemarCore/Date.h"

namespace tidemar::testing {

/// The instant at which clocks in UTC show this.
constexpr Date utc(int year, unsigned month, unsigned day, int hour = 0, int minute = 0,
                   double second = 0) {
  const std::chrono::sys_days date =
      std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day);
  return {static_cast<double>(date.time_since_epoch().count()) * 86400.0 + hour * 3600.0 +
          minute * 60.0 + second};
}

}  // namespace tidemar::testing
