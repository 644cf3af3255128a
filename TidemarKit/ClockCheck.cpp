#include "TidemarKit/ClockCheck.h"

#include <cmath>

namespace tidemar {
namespace {

constexpr double longestStep = secondsPerDay;
constexpr double farAhead = 366 * secondsPerDay;

/// A little less than the hour between two cycles.
constexpr double longestDoubt = 59 * 60;

}  // namespace

bool ClockCheck::isTrusted(Reading reading, std::optional<Date> latestKnown) {
  bool isDoubtful = false;
  if (_last) {
    const double passed = reading.secondsSinceBoot - _last->secondsSinceBoot;
    const Date expected = _last->now + passed;
    isDoubtful = std::abs(reading.now.secondsSince1970 - expected.secondsSince1970) > longestStep;
  } else {
    isDoubtful = latestKnown && reading.now - farAhead > *latestKnown;
  }
  _last = reading;
  if (isDoubtful) _doubtedSince = reading.secondsSinceBoot;
  if (_doubtedSince && reading.secondsSinceBoot - *_doubtedSince >= longestDoubt)
    _doubtedSince.reset();
  return !_doubtedSince;
}

}  // namespace tidemar
