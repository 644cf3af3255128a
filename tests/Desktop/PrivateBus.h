#pragma once

#include <QDBusConnection>
#include <QString>

#include "Helper.h"
#include "support/TemporaryTree.h"

namespace tidemar::testing {

/// A session bus for one test, which starts no services by itself.
class PrivateBus {
 public:
  PrivateBus();
  ~PrivateBus();

  const QString& address() const { return _address; }

  /// A new connection, which ends with the bus.
  QDBusConnection connect();

 private:
  TemporaryDirectory _directory;
  Helper _daemon;
  QString _address;
  QStringList _connections;
};

}  // namespace tidemar::testing
