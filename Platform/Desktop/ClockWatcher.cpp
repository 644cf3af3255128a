#include "Platform/Desktop/ClockWatcher.h"

#include <QSocketNotifier>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <limits>

#include <sys/timerfd.h>
#include <unistd.h>

namespace tidemar {

ClockWatcher::ClockWatcher(QObject* parent)
    : QObject(parent), _timer(timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK)) {
  if (!_timer) return;
  itimerspec never{};
  never.it_value.tv_sec = std::numeric_limits<std::time_t>::max();
  timerfd_settime(_timer.get(), TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &never, nullptr);

  auto* notifier = new QSocketNotifier(_timer.get(), QSocketNotifier::Read, this);
  connect(notifier, &QSocketNotifier::activated, this, [this] {
    // The read fails and leaves the timer as it was, ready for the next jump.
    std::uint64_t expirations = 0;
    const bool hasFailed = read(_timer.get(), &expirations, sizeof expirations) < 0;
    if (hasFailed && errno == ECANCELED) emit clockJumped();
  });
}

}  // namespace tidemar
