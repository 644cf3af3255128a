#pragma once

#include <QDBusConnection>
#include <QString>
#include <optional>

#include <gtest/gtest.h>

#include "Helper.h"
#include "support/TemporaryTree.h"

namespace tidemar::testing {

/// A session bus for one test, which knows no services to start but those it is told of.
class PrivateBus {
 public:
  PrivateBus();
  ~PrivateBus();

  const QString& address() const { return _address; }

  /// Has the bus start that service when it is called, as far as it may, which then fails.
  void makeStartable(const QString& name);

  /// A new connection, which ends with the bus.
  QDBusConnection connect();

 private:
  TemporaryDirectory _directory;
  Helper _daemon;
  QString _address;
  QStringList _connections;
};

/// A test with a bus of its own, where the machine has the program for one.
class BusTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!Helper::exists("dbus-daemon")) GTEST_SKIP() << "needs dbus-daemon";
    bus.emplace();
  }

  std::optional<PrivateBus> bus;
};

}  // namespace tidemar::testing
