#pragma once

#include <QObject>

namespace tidemar {

/// Tells when the computer woke from sleep, by logind's signal on the system bus. Main thread.
/// Where there is no system bus it never tells anything.
class WakeNotifier : public QObject {
  Q_OBJECT
 public:
  explicit WakeNotifier(QObject* parent = nullptr);

 signals:
  void didWake();

 private slots:
  void prepareForSleep(bool isAboutToSleep);
};

}  // namespace tidemar
