#pragma once

#include <chrono>

/// Clocks that nobody can set, by whose difference a sleep of the computer can be told.
namespace tidemar::SleepClocks {

/// Since the computer was started, the time asleep counted in. Never goes back.
std::chrono::nanoseconds sinceBoot();

/// How long of that the computer was asleep, to within the time between two readings.
std::chrono::nanoseconds asleepSinceBoot();

}  // namespace tidemar::SleepClocks
