#include "FakeDesktop.h"

#include <csignal>

#include <sys/prctl.h>

namespace tidemar::testing {

QString start(QProcess& process, const QString& program, const QStringList& arguments) {
  process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
  process.start(program, arguments);
  while (!process.canReadLine() && process.waitForReadyRead()) {
  }
  return QString::fromUtf8(process.readLine()).trimmed();
}

PrivateBus::PrivateBus() {
  const std::string place = _directory.path();
  writeFile(_directory.url("bus.conf"),
            "<busconfig><type>session</type><listen>unix:dir=" + place + "</listen><servicedir>" +
                place +
                "</servicedir><policy context=\"default\"><allow send_destination=\"*\" "
                "eavesdrop=\"true\"/><allow eavesdrop=\"true\"/><allow own=\"*\"/></policy>"
                "</busconfig>");
  _address =
      start(_daemon, QStringLiteral("dbus-daemon"),
            {QStringLiteral("--nofork"), QStringLiteral("--print-address=1"),
             QStringLiteral("--config-file=") + QString::fromStdString(place + "/bus.conf")});
  if (_address.isEmpty()) throw std::runtime_error("dbus-daemon didn't start");
}

PrivateBus::~PrivateBus() {
  for (const QString& name : _connections)
    QDBusConnection::disconnectFromBus(name);
  _daemon.terminate();
  if (!_daemon.waitForFinished()) _daemon.kill();
  _daemon.waitForFinished();
}

void PrivateBus::makeStartable(const QString& name) {
  const std::string service = name.toStdString();
  writeFile(_directory.url(service + ".service"),
            "[D-BUS Service]\nName=" + service + "\nExec=/bin/false\n");
  connect().call(QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("ReloadConfig")));
}

QDBusConnection PrivateBus::connect() {
  const QString name = _address + u'#' + QString::number(_connections.size());
  _connections << name;
  return QDBusConnection::connectToBus(_address, name);
}

}  // namespace tidemar::testing
