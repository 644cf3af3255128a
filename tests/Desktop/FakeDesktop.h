#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QDesktopServices>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

#include <QtCore/qtestsupport_core.h>

#include "support/Testing.h"

namespace tidemar::testing {

/// Starts a program that ends with the tests, should they crash, and answers the first line that it
/// prints; empty where it prints none.
QString start(QProcess& process, const QString& program, const QStringList& arguments);

/// A session bus for one test, which knows no services to start but those it is told of.
class PrivateBus {
 public:
  PrivateBus();
  ~PrivateBus();

  /// Has the bus start that service when it is called, as far as it may, which then fails.
  void makeStartable(const QString& name);

  /// A new connection, which ends with the bus.
  QDBusConnection connect();

 private:
  TemporaryDirectory _directory;
  QProcess _daemon;
  QString _address;
  QStringList _connections;
};

/// A test with a bus of its own, where the machine has the program for one.
class BusTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (QStandardPaths::findExecutable(QStringLiteral("dbus-daemon")).isEmpty())
      GTEST_SKIP() << "needs dbus-daemon";
    bus.emplace();
  }

  std::optional<PrivateBus> bus;
};

/// Lets the program go on until it is so, for some seconds at most.
inline void waitUntil(const std::function<bool()>& isSo) {
  EXPECT_TRUE(QTest::qWaitFor(isSo, 20'000));
}

/// Handles all that was sent to this thread's connections before one of them asks this name.
inline void settle(const QDBusConnection& from, const QString& to) {
  const QDBusMessage ping = QDBusMessage::createMethodCall(
      to, QStringLiteral("/"), QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"));
  from.call(ping, QDBus::BlockWithGui);
  // An answer that is there at once leaves what came before it unhandled.
  QCoreApplication::processEvents();
}

/// Owns a name of the bus on a connection of its own, as long as it lives, and answers the calls of
/// one object and those below it. It writes them down.
class FakeService : public QDBusVirtualObject {
 public:
  /// The reply to a call; one of no type for silence.
  using Answer = std::function<QDBusMessage(const QDBusMessage&)>;

  FakeService(QDBusConnection bus, QString name, const QString& path, Answer answer)
      : _bus(std::move(bus)), _name(std::move(name)), _answer(std::move(answer)) {
    _bus.registerVirtualObject(path, this, QDBusConnection::SubPath);
    _bus.registerService(_name);
  }
  ~FakeService() override { leave(); }

  std::vector<QDBusMessage> calls;

  void send(const QString& path, const QString& interface, const QString& signal,
            const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createSignal(path, interface, signal);
    message.setArguments(arguments);
    _bus.send(message);
  }

  /// Gives the name up, as a service does that ends.
  void leave() { _bus.unregisterService(_name); }

  bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override {
    calls.push_back(message);
    const QDBusMessage reply = _answer(message);
    return reply.type() == QDBusMessage::InvalidMessage || bus.send(reply);
  }
  QString introspect(const QString&) const override { return {}; }

 private:
  QDBusConnection _bus;
  QString _name;
  Answer _answer;
};

/// Takes the URLs of one scheme that the program opens, in place of the desktop.
class OpenedURLs : public QObject {
  Q_OBJECT
 public:
  explicit OpenedURLs(const char* scheme) : _scheme(QString::fromLatin1(scheme)) {
    QDesktopServices::setUrlHandler(_scheme, this, "open");
  }
  ~OpenedURLs() override { QDesktopServices::unsetUrlHandler(_scheme); }

  QStringList urls;  ///< Percent-encoded.

 public slots:
  void open(const QUrl& url) { urls << QString::fromLatin1(url.toEncoded()); }

 private:
  QString _scheme;
};

}  // namespace tidemar::testing
