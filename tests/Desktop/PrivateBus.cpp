#include "PrivateBus.h"

#include <QDBusMessage>
#include <stdexcept>

namespace tidemar::testing {
namespace {

std::string configuration(const std::string& socketDirectory) {
  return "<busconfig><type>session</type><listen>unix:dir=" + socketDirectory +
         "</listen><servicedir>" + socketDirectory +
         "</servicedir><policy context=\"default\"><allow send_destination=\"*\" "
         "eavesdrop=\"true\"/>"
         "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>";
}

}  // namespace

PrivateBus::PrivateBus() {
  writeFile(_directory.url("bus.conf"), configuration(_directory.path()));
  const QString file = QString::fromStdString(_directory.path("bus.conf"));
  _daemon.start(QStringLiteral("dbus-daemon"),
                {QStringLiteral("--nofork"), QStringLiteral("--print-address=1"),
                 QStringLiteral("--config-file=") + file});
  _address = _daemon.readLine();
  if (_address.isEmpty()) throw std::runtime_error("dbus-daemon didn't start");
}

PrivateBus::~PrivateBus() {
  for (const QString& name : _connections)
    QDBusConnection::disconnectFromBus(name);
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
