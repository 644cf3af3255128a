#pragma once

#include <optional>

#include "TidemarCore/Date.h"

namespace tidemar {

/// Tells a clock by which nothing should be cleared just now: one that was set by more than a day
/// since it was last looked at, or that lies more than a year ahead of all that is known. Whether
/// the old or the new time is the right one can't be told, nor whether the computer was switched
/// off for a year. So such a clock is doubted until it has run on for an hour, in which a time
/// server or the user may set it right, and is believed then.
///
/// Small steps, and what a clock shows that was wrong before the first look, are not noticed. For
/// one thread.
class ClockCheck {
 public:
  /// What the two clocks show at one moment.
  struct Reading {
    Date now;
    double secondsSinceBoot = 0;  ///< By a clock that nobody sets and that counts sleep.
  };

  /// Looks at the clock before anything is cleared by it. `latestKnown` is the latest date that the
  /// program itself has written; none where it has written none.
  bool isTrusted(Reading reading, std::optional<Date> latestKnown);

 private:
  std::optional<Reading> _last;
  std::optional<double> _doubtedSince;  ///< In seconds since the boot.
};

}  // namespace tidemar
