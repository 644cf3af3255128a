#pragma once

#include <chrono>
#include <optional>

namespace tidemar {

/// Tells the first report of a wake from the ones that repeat it: a report that comes within a few
/// seconds of the one before tells of the same wake. An immediate second sleep is none the shorter
/// for it, since time passes here while the computer sleeps.
class WakeReports {
 public:
  static constexpr std::chrono::seconds repeatInterval{5};

  /// `time` counts the time asleep too, and never goes back (CLOCK_BOOTTIME).
  bool isNewWake(std::chrono::nanoseconds time) {
    const bool isNew = !_last || time - *_last > repeatInterval;
    _last = time;
    return isNew;
  }

 private:
  std::optional<std::chrono::nanoseconds> _last;
};

}  // namespace tidemar
