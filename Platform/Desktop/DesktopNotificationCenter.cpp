#include "Platform/Desktop/DesktopNotificationCenter.h"

#include <QCoroDBusPendingCall>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QStringList>
#include <QVariantMap>
#include <stdexcept>
#include <utility>

namespace tidemar {
namespace {

/// The server's own words might quote the notification, and the log must not.
std::runtime_error failure(const QDBusError& error) {
  switch (error.type()) {
    case QDBusError::Disconnected:
      return std::runtime_error("There is no session bus to send notifications over.");
    case QDBusError::ServiceUnknown:
      return std::runtime_error("This desktop has no notification service.");
    case QDBusError::NoReply:
    case QDBusError::TimedOut:
    case QDBusError::Timeout:
      return std::runtime_error("The notification service didn't answer.");
    default:
      return std::runtime_error("The notification service refused (" + error.name().toStdString() +
                                ").");
  }
}

QString escaped(QString text) {
  return text.replace(u'&', QStringLiteral("&amp;"))
      .replace(u'<', QStringLiteral("&lt;"))
      .replace(u'>', QStringLiteral("&gt;"));
}

/// What is given to "Notify". An id of 0 replaces nothing.
QVariantList quietNotification(quint32 replacedID, const QString& title, const QString& body) {
  constexpr uchar lowUrgency = 0;
  constexpr int serversOwnExpiry = -1;
  const QVariantMap hints = {
      {QStringLiteral("urgency"), QVariant::fromValue(lowUrgency)},
      {QStringLiteral("desktop-entry"), QStringLiteral("app.quernly.tidemar")}};
  return {QStringLiteral("Tidemar"),
          replacedID,
          QStringLiteral("app.quernly.tidemar"),
          title,
          body,
          QStringList(),
          hints,
          serversOwnExpiry};
}

}  // namespace

DesktopNotificationCenter::DesktopNotificationCenter(QDBusConnection bus,
                                                     std::chrono::milliseconds patience)
    : _bus(std::move(bus)), _patience(patience) {}

QCoro::Task<bool> DesktopNotificationCenter::isAuthorized() {
  try {
    co_await findServer();
    co_return true;
  } catch (const std::runtime_error&) {
    // Why there is none is told when a notification is sent.
    co_return false;
  }
}

QCoro::Task<bool> DesktopNotificationCenter::requestAuthorization() {
  return isAuthorized();
}

QCoro::Task<void> DesktopNotificationCenter::add(std::string identifier, std::string title,
                                                 std::string body) {
  const Server server = co_await findServer();
  if (_server != server.uniqueName) {
    // Under another server these ids are those of other programs' notifications.
    _serverIDs.clear();
    _server = server.uniqueName;
  }
  const auto earlier = _serverIDs.find(identifier);
  const quint32 replaced = earlier == _serverIDs.end() ? 0 : earlier->second;
  const QString text = QString::fromStdString(body);
  const QVariantList notification = quietNotification(replaced, QString::fromStdString(title),
                                                      server.readsMarkup ? escaped(text) : text);
  const QDBusPendingCall pending = call(server.uniqueName, QStringLiteral("Notify"), notification);
  const QDBusPendingReply<quint32> reply = co_await pending;
  if (reply.isError()) throw failure(reply.error());
  if (_server == server.uniqueName) _serverIDs[std::move(identifier)] = reply.value();
}

QCoro::Task<DesktopNotificationCenter::Server> DesktopNotificationCenter::findServer() {
  const QDBusPendingCall pending =
      call(QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("GetCapabilities"), {});
  const QDBusMessage answer = co_await pending;
  const QDBusPendingReply<QStringList> reply = answer;
  if (reply.isError()) throw failure(reply.error());
  co_return Server{answer.service(), reply.value().contains(QStringLiteral("body-markup"))};
}

QDBusPendingCall DesktopNotificationCenter::call(const QString& server, const QString& method,
                                                 const QVariantList& arguments) const {
  QDBusMessage message =
      QDBusMessage::createMethodCall(server, QStringLiteral("/org/freedesktop/Notifications"),
                                     QStringLiteral("org.freedesktop.Notifications"), method);
  message.setArguments(arguments);
  return _bus.asyncCall(message, static_cast<int>(_patience.count()));
}

}  // namespace tidemar
