#include "Platform/Desktop/TrayHost.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QGuiApplication>

#include "Platform/Desktop/X11.h"

namespace tidemar {
namespace {

const QString watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

bool hasEmbeddingTray() {
  xcb_connection_t* connection = X11::connection();
  if (connection == nullptr) return false;
  const auto cookie = xcb_get_selection_owner(connection, X11::atom("_NET_SYSTEM_TRAY_S0"));
  const auto reply = X11::owned(xcb_get_selection_owner_reply(connection, cookie, nullptr));
  return reply && reply->owner != XCB_WINDOW_NONE;
}

}  // namespace

TrayHost::TrayHost(QObject* parent) : QObject(parent) {
  QDBusConnection bus = QDBusConnection::sessionBus();
  auto* watcher =
      new QDBusServiceWatcher(watcherService, bus, QDBusServiceWatcher::WatchForRegistration, this);
  connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &TrayHost::askForNotifierHost);
  bus.connect(watcherService, watcherPath, watcherService,
              QStringLiteral("StatusNotifierHostRegistered"), this, SLOT(askForNotifierHost()));
  qGuiApp->installNativeEventFilter(this);
  if (hasEmbeddingTray()) {
    becomeAvailable();
  } else {
    askForNotifierHost();
  }
}

TrayHost::~TrayHost() {
  qGuiApp->removeNativeEventFilter(this);
}

void TrayHost::askForNotifierHost() {
  if (_isAvailable) return;
  QDBusMessage call = QDBusMessage::createMethodCall(
      watcherService, watcherPath, QStringLiteral("org.freedesktop.DBus.Properties"),
      QStringLiteral("Get"));
  call.setAutoStartService(false);
  call << watcherService << QStringLiteral("IsStatusNotifierHostRegistered");
  auto* pending = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
  connect(pending, &QDBusPendingCallWatcher::finished, this, [this, pending] {
    const QDBusPendingReply<QDBusVariant> reply = *pending;
    if (reply.isValid() && reply.value().variant().toBool()) becomeAvailable();
    pending->deleteLater();
  });
}

bool TrayHost::nativeEventFilter(const QByteArray& type, void* message, qintptr*) {
  if (_isAvailable || type != "xcb_generic_event_t") return false;
  const auto* event = static_cast<const xcb_generic_event_t*>(message);
  // A tray that comes up announces itself to all clients.
  if ((event->response_type & 0x7F) != XCB_CLIENT_MESSAGE) return false;
  const auto* announcement = reinterpret_cast<const xcb_client_message_event_t*>(event);
  if (announcement->type == X11::atom("MANAGER") && hasEmbeddingTray()) becomeAvailable();
  return false;
}

void TrayHost::becomeAvailable() {
  if (_isAvailable) return;
  _isAvailable = true;
  emit becameAvailable();
}

}  // namespace tidemar
