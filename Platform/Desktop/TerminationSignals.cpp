#include "Platform/Desktop/TerminationSignals.h"

#include <QSocketNotifier>
#include <csignal>

#include <sys/signalfd.h>
#include <unistd.h>

namespace tidemar {

TerminationSignals::TerminationSignals() {
  // Where nobody reads the log any more, a line of it must not end the process.
  std::signal(SIGPIPE, SIG_IGN);
  sigset_t terminating;
  sigemptyset(&terminating);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP})
    sigaddset(&terminating, signal);
  pthread_sigmask(SIG_BLOCK, &terminating, nullptr);
  _descriptor = FileDescriptor(signalfd(-1, &terminating, SFD_CLOEXEC | SFD_NONBLOCK));
}

void TerminationSignals::watch() {
  auto* notifier = new QSocketNotifier(_descriptor.get(), QSocketNotifier::Read, this);
  connect(notifier, &QSocketNotifier::activated, this, [this] {
    signalfd_siginfo information{};
    while (read(_descriptor.get(), &information, sizeof information) > 0) {
    }
    emit received();
  });
}

}  // namespace tidemar
