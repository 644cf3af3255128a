#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <chrono>
#include <map>
#include <optional>
#include <string>

#include "Platform/Desktop/NotificationCenter.h"

namespace tidemar {

/// Notifications by the bus interface org.freedesktop.Notifications. The server is asked for anew
/// each time: one that comes late or was restarted needs no care. It is never started by that,
/// since the bus may know another one than the desktop's own. Where a server answers, notifications
/// count as authorized. Never waits on the main thread. Must outlive what was asked of it.
class DesktopNotificationCenter : public QObject, public NotificationCenter {
  Q_OBJECT
 public:
  /// `clickLabel` says what a click does, which few servers show; `patience` is how long one answer
  /// may take, and about how long a server that has its name already is waited for.
  DesktopNotificationCenter(QDBusConnection bus, QString clickLabel,
                            std::chrono::milliseconds patience = std::chrono::seconds(5));

  QCoro::Task<bool> isAuthorized() override;

  /// There is nothing to ask the user here: the same as above, and throws nothing.
  QCoro::Task<bool> requestAuthorization() override;

  /// Throws std::runtime_error with a sentence without any of the texts in it.
  QCoro::Task<void> add(std::string identifier, std::string title, std::string body) override;

 signals:
  /// There is a server now, where there was none or another one.
  void serverCame();

  /// The user clicked a notification that was added under this identifier. A token that came with
  /// the click waits for the window that answers it.
  void clicked(const std::string& identifier);

 private slots:
  void keepToken(quint32 id, const QString& token);
  void handOutClick(quint32 id, const QString& action);

 private:
  struct Server {
    QString uniqueName;  ///< Names this very process, and no other as long as the bus lives.
    bool readsMarkup = false;
    bool knowsClicks = false;
  };

  QCoro::Task<Server> findServer();
  std::optional<std::string> identifierOf(quint32 id) const;
  QCoro::Task<bool> keepsLowUrgency(QString server);
  QDBusPendingCall call(const QString& server, const QString& method,
                        const QVariantList& arguments) const;

  QDBusConnection _bus;
  QString _clickLabel;
  std::chrono::milliseconds _patience;
  QDBusServiceWatcher _watcher;
  QString _server;                            ///< Gave the ids below.
  std::map<std::string, quint32> _serverIDs;  ///< Of what was delivered, by identifier.
};

}  // namespace tidemar
