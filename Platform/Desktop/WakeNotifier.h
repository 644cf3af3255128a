#pragma once

#include <QDBusConnection>
#include <QObject>

#include "Platform/Desktop/TimeAsleep.h"
#include "Platform/Desktop/WakeReports.h"

namespace tidemar {

/// Tells once for every time that the computer woke from sleep: by logind's signal on the system
/// bus or, where no logind answers, by the kernel's word that the clock jumped while the computer
/// slept. Main thread.
class WakeNotifier : public QObject {
  Q_OBJECT
 public:
  explicit WakeNotifier(QDBusConnection systemBus, QObject* parent = nullptr);

 signals:
  void didWake();

 private slots:
  void prepareForSleep(bool isAboutToSleep);

 private:
  void watchClock();
  void reportWake();

  WakeReports _reports;
  TimeAsleep _timeAsleep;
};

}  // namespace tidemar
