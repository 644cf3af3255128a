#include "Platform/Desktop/WakeNotifier.h"

#include <QDBusConnection>

namespace tidemar {

WakeNotifier::WakeNotifier(QObject* parent) : QObject(parent) {
  QDBusConnection::systemBus().connect(
      QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
      QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("PrepareForSleep"), this,
      SLOT(prepareForSleep(bool)));
}

void WakeNotifier::prepareForSleep(bool isAboutToSleep) {
  if (!isAboutToSleep) emit didWake();
}

}  // namespace tidemar
