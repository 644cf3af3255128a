#pragma once

#include <QObject>

#include "Platform/Files/Descriptors/FileDescriptor.h"

namespace tidemar {

/// Turns SIGTERM, SIGINT and SIGHUP into an event of the main thread, and ignores SIGPIPE. Make it
/// before the application and any other thread, so that the signals reach nothing else.
class TerminationSignals : public QObject {
  Q_OBJECT
 public:
  TerminationSignals();

  /// Begins to tell. Call it once the application exists.
  void watch();

 signals:
  void received();

 private:
  FileDescriptor _descriptor;
};

}  // namespace tidemar
