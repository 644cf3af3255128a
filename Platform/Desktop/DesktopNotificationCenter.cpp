#include "Platform/Desktop/DesktopNotificationCenter.h"

#include <QCoroDBusPendingCall>
#include <QCoroTimer>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QDeadlineTimer>
#include <QStringList>
#include <QVariantMap>
#include <algorithm>
#include <stdexcept>
#include <utility>

#include "Platform/Desktop/ActivationToken.h"

namespace tidemar {
namespace {

const QString serviceName = QStringLiteral("org.freedesktop.Notifications");

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
      // What the bus says where it could start one and may not.
      if (error.name() == QStringLiteral("org.freedesktop.DBus.Error.NameHasNoOwner"))
        return std::runtime_error("This desktop has no notification service.");
      return std::runtime_error("The notification service refused (" + error.name().toStdString() +
                                ").");
  }
}

/// Of a server that has taken its name and isn't to be reached under it yet: GNOME's opens its
/// object a moment later.
bool isStillStarting(const QDBusError& error) {
  return error.type() == QDBusError::UnknownMethod || error.type() == QDBusError::UnknownObject ||
         error.type() == QDBusError::UnknownInterface;
}

QString escaped(QString text) {
  return text.replace(u'&', QStringLiteral("&amp;"))
      .replace(u'<', QStringLiteral("&lt;"))
      .replace(u'>', QStringLiteral("&gt;"));
}

enum class Urgency : uchar { low = 0, normal = 1 };

/// What a click on the whole of a notification invokes.
const QString clickAction = QStringLiteral("default");

/// What is given to "Notify". An id of 0 replaces nothing.
QVariantList quietNotification(quint32 replacedID, const QString& title, const QString& body,
                               const QStringList& actions, Urgency urgency) {
  constexpr int serversOwnExpiry = -1;
  const QVariantMap hints = {
      {QStringLiteral("urgency"), QVariant::fromValue(static_cast<uchar>(urgency))},
      {QStringLiteral("suppress-sound"), true},
      {QStringLiteral("desktop-entry"), QStringLiteral("app.quernly.tidemar")}};
  return {QStringLiteral("Tidemar"),
          replacedID,
          QStringLiteral("app.quernly.tidemar"),
          title,
          body,
          actions,
          hints,
          serversOwnExpiry};
}

}  // namespace

DesktopNotificationCenter::DesktopNotificationCenter(QDBusConnection bus, QString clickLabel,
                                                     std::chrono::milliseconds patience)
    : _bus(std::move(bus)),
      _clickLabel(std::move(clickLabel)),
      _patience(patience),
      _watcher(serviceName, _bus, QDBusServiceWatcher::WatchForOwnerChange) {
  connect(&_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString&, const QString&, const QString& owner) {
            if (!owner.isEmpty()) emit serverCame();
          });
  const auto follow = [this](const char* signal, const char* slot) {
    _bus.connect(serviceName, QStringLiteral("/org/freedesktop/Notifications"), serviceName,
                 QLatin1String(signal), this, slot);
  };
  follow("ActivationToken", SLOT(keepToken(quint32, QString)));
  follow("ActionInvoked", SLOT(handOutClick(quint32, QString)));
}

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
  const bool keepsLow = co_await keepsLowUrgency(server.uniqueName);
  if (_server != server.uniqueName) {
    // Under another server these ids are those of other programs' notifications.
    _serverIDs.clear();
    _server = server.uniqueName;
  }
  const auto earlier = _serverIDs.find(identifier);
  const quint32 replaced = earlier == _serverIDs.end() ? 0 : earlier->second;
  const QString text = QString::fromStdString(body);
  const QVariantList notification = quietNotification(
      replaced, QString::fromStdString(title), server.readsMarkup ? escaped(text) : text,
      server.knowsClicks ? QStringList{clickAction, _clickLabel} : QStringList(),
      keepsLow ? Urgency::low : Urgency::normal);
  const QDBusPendingCall pending = call(server.uniqueName, QStringLiteral("Notify"), notification);
  const QDBusPendingReply<quint32> reply = co_await pending;
  if (reply.isError()) throw failure(reply.error());
  if (_server == server.uniqueName) _serverIDs[std::move(identifier)] = reply.value();
}

QCoro::Task<DesktopNotificationCenter::Server> DesktopNotificationCenter::findServer() {
  const QDeadlineTimer end(_patience);
  for (std::chrono::milliseconds pause(50);; pause *= 2) {
    const QDBusPendingCall pending = call(serviceName, QStringLiteral("GetCapabilities"), {});
    const QDBusMessage answer = co_await pending;
    const QDBusPendingReply<QStringList> reply = answer;
    if (!reply.isError()) {
      const QStringList capabilities = reply.value();
      co_return Server{answer.service(), capabilities.contains(QStringLiteral("body-markup")),
                       capabilities.contains(QStringLiteral("actions"))};
    }
    if (!isStillStarting(reply.error()) || end.hasExpired()) throw failure(reply.error());
    co_await QCoro::sleepFor(pause);
  }
}

/// Comes just before the click that it belongs to.
void DesktopNotificationCenter::keepToken(quint32 id, const QString& token) {
  if (identifierOf(id)) accept(ActivationToken{.token = token, .startupID = token});
}

void DesktopNotificationCenter::handOutClick(quint32 id, const QString& action) {
  const std::optional<std::string> identifier = identifierOf(id);
  if (identifier && action == clickAction) emit clicked(*identifier);
}

/// None for a notification of another program's, which a server may tell all of.
std::optional<std::string> DesktopNotificationCenter::identifierOf(quint32 id) const {
  const auto found =
      std::ranges::find(_serverIDs, id, [](const auto& entry) { return entry.second; });
  return found == _serverIDs.end() ? std::nullopt : std::optional(found->first);
}

/// Whether a server lists what isn't urgent, without a banner. Others show that for a moment and
/// keep it nowhere.
QCoro::Task<bool> DesktopNotificationCenter::keepsLowUrgency(QString server) {
  const QDBusPendingCall pending = call(server, QStringLiteral("GetServerInformation"), {});
  const QDBusMessage answer = co_await pending;
  co_return answer.type() == QDBusMessage::ReplyMessage&& answer.arguments().value(0).toString() ==
      QStringLiteral("gnome-shell");
}

QDBusPendingCall DesktopNotificationCenter::call(const QString& server, const QString& method,
                                                 const QVariantList& arguments) const {
  QDBusMessage message = QDBusMessage::createMethodCall(
      server, QStringLiteral("/org/freedesktop/Notifications"), serviceName, method);
  message.setAutoStartService(false);
  message.setArguments(arguments);
  return _bus.asyncCall(message, static_cast<int>(_patience.count()));
}

}  // namespace tidemar
