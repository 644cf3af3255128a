#pragma once

#include <QObject>

#include "Platform/Files/Descriptors/FileDescriptor.h"

namespace tidemar {

/// Tells when the wall clock jumped, as it does when it is set and when the computer wakes. The
/// kernel tells it; until then nothing runs. Main thread.
class ClockWatcher : public QObject {
  Q_OBJECT
 public:
  explicit ClockWatcher(QObject* parent = nullptr);

 signals:
  void clockJumped();

 private:
  FileDescriptor _timer;
};

}  // namespace tidemar
