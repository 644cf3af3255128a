#include "Platform/Desktop/WakeNotifier.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

#include "Platform/Desktop/ClockWatcher.h"
#include "Platform/Desktop/SleepClocks.h"

namespace tidemar {
namespace {

const QString serviceName = QStringLiteral("org.freedesktop.login1");
const QString objectPath = QStringLiteral("/org/freedesktop/login1");

}  // namespace

WakeNotifier::WakeNotifier(QDBusConnection systemBus, QObject* parent)
    : QObject(parent), _timeAsleep(SleepClocks::asleepSinceBoot()) {
  if (!systemBus.isConnected()) {
    watchClock();
    return;
  }
  systemBus.connect(serviceName, objectPath, QStringLiteral("org.freedesktop.login1.Manager"),
                    QStringLiteral("PrepareForSleep"), this, SLOT(prepareForSleep(bool)));

  // A name that the bus could start says little: in a container nothing comes of it.
  const QDBusMessage ping = QDBusMessage::createMethodCall(
      serviceName, objectPath, QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"));
  auto* answer = new QDBusPendingCallWatcher(systemBus.asyncCall(ping), this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
    if (answer->isError()) watchClock();
    answer->deleteLater();
  });
}

void WakeNotifier::prepareForSleep(bool isAboutToSleep) {
  if (!isAboutToSleep) reportWake();
}

void WakeNotifier::watchClock() {
  auto* watcher = new ClockWatcher(this);
  connect(watcher, &ClockWatcher::clockJumped, this, [this] {
    if (_timeAsleep.hasGrown(SleepClocks::asleepSinceBoot())) reportWake();
  });
}

void WakeNotifier::reportWake() {
  if (_reports.isNewWake(SleepClocks::sinceBoot())) emit didWake();
}

}  // namespace tidemar
