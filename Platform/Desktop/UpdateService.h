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

/// Stands where nothing on this system can look for one.
class UnavailableUpdateService : public UpdateService {
  Q_OBJECT
 public:
  using UpdateService::UpdateService;
  bool canCheckForUpdates() const override { return false; }
  void checkForUpdates() override {}
};

}  // namespace tidemar
