#pragma once

#include <QTimer>
#include <functional>

#include "Tidemar/Model/AppModel.h"

namespace tidemar {

/// Calls back once after any number of changes of the model, as soon as the event loop is free: one
/// reading of the folders changes several values. Main thread.
class ModelObserver : public QObject {
 public:
  ModelObserver(const AppModel& model, std::function<void()> refresh) {
    _pause.setSingleShot(true);
    connect(&_pause, &QTimer::timeout, this, std::move(refresh));
    for (const auto signal : {&AppModel::reportsChanged, &AppModel::journalChanged,
                              &AppModel::freeSpaceChanged, &AppModel::systemStateChanged})
      connect(&model, signal, &_pause, qOverload<>(&QTimer::start));
  }

 private:
  QTimer _pause;
};

}  // namespace tidemar
