#pragma once

#include <QObject>

namespace tidemar {

/// What can look for a newer version of the program. Main thread.
class UpdateService : public QObject {
  Q_OBJECT
 public:
  using QObject::QObject;

  virtual bool canCheckForUpdates() const = 0;

  /// Looks for one and tells the user what it found.
  virtual void checkForUpdates() = 0;

 signals:
  void canCheckForUpdatesChanged();
};

}  // namespace tidemar
