#pragma once

#include <QObject>

#include "Platform/Desktop/UpdateService.h"

namespace tidemar {

/// Whether the program can look for a newer version of itself, and the looking. Main thread.
class Updates : public QObject {
  Q_OBJECT
 public:
  explicit Updates(UpdateService& service) : _service(service) {
    connect(&service, &UpdateService::canCheckForUpdatesChanged, this, &Updates::follow);
    follow();
  }

  bool canCheck() const noexcept { return _canCheck; }
  void checkForUpdates() { _service.checkForUpdates(); }

 signals:
  void canCheckChanged();

 private:
  void follow() {
    if (_service.canCheckForUpdates() == _canCheck) return;
    _canCheck = !_canCheck;
    emit canCheckChanged();
  }

  UpdateService& _service;
  bool _canCheck = false;
};

}  // namespace tidemar
