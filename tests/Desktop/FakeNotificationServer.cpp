#include "FakeNotificationServer.h"

#include <QDBusArgument>

namespace tidemar::testing {
namespace {

const QString serviceName = QStringLiteral("org.freedesktop.Notifications");
const QString objectPath = QStringLiteral("/org/freedesktop/Notifications");

}  // namespace

FakeNotificationServer::FakeNotificationServer(QDBusConnection bus, QStringList capabilities,
                                               quint32 firstID)
    : _bus(std::move(bus)), _capabilities(std::move(capabilities)), _nextID(firstID) {
  _bus.registerVirtualObject(objectPath, this);
  _bus.registerService(serviceName);
}

FakeNotificationServer::~FakeNotificationServer() {
  _bus.unregisterService(serviceName);
  _bus.unregisterObject(objectPath);
}

bool FakeNotificationServer::handleMessage(const QDBusMessage& message,
                                           const QDBusConnection& bus) {
  if (message.interface() != serviceName) return false;
  if (manner == Manner::isSilent) return true;
  if (message.member() == QStringLiteral("GetCapabilities")) {
    return bus.send(message.createReply(_capabilities));
  }
  if (message.member() != QStringLiteral("Notify")) return false;
  if (manner == Manner::refuses) {
    return bus.send(message.createErrorReply(QStringLiteral("org.example.TooMany"),
                                             QStringLiteral("too many of “canary”")));
  }
  const QVariantList arguments = message.arguments();
  notifications.push_back({.signature = message.signature().toStdString(),
                           .applicationName = arguments.value(0).toString(),
                           .replacedID = arguments.value(1).toUInt(),
                           .icon = arguments.value(2).toString(),
                           .summary = arguments.value(3).toString(),
                           .body = arguments.value(4).toString(),
                           .actions = arguments.value(5).toStringList(),
                           .hints = qdbus_cast<QVariantMap>(arguments.value(6)),
                           .expiry = arguments.value(7).toInt()});
  const quint32 replaced = notifications.back().replacedID;
  return bus.send(message.createReply(replaced != 0 ? replaced : _nextID++));
}

}  // namespace tidemar::testing
