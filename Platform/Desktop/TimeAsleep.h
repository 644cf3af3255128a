#pragma once

#include <chrono>

namespace tidemar {

/// Tells whether the computer slept since it was last asked, by the total time that it was asleep.
class TimeAsleep {
 public:
  /// The total is taken from two readings, which may lie so far apart.
  static constexpr std::chrono::seconds tolerance{1};

  explicit TimeAsleep(std::chrono::nanoseconds total) : _total(total) {}

  bool hasGrown(std::chrono::nanoseconds total) {
    if (total - _total <= tolerance) return false;
    _total = total;
    return true;
  }

 private:
  std::chrono::nanoseconds _total;
};

}  // namespace tidemar
