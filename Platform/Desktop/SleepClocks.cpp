#include "Platform/Desktop/SleepClocks.h"

#include <ctime>

namespace tidemar::SleepClocks {
namespace {

std::chrono::nanoseconds timeOf(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

}  // namespace

std::chrono::nanoseconds sinceBoot() {
  return timeOf(CLOCK_BOOTTIME);
}

std::chrono::nanoseconds asleepSinceBoot() {
  const std::chrono::nanoseconds awake = timeOf(CLOCK_MONOTONIC);
  return sinceBoot() - awake;
}

}  // namespace tidemar::SleepClocks
