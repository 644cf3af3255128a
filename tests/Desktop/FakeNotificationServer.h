#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QStringList>
#include <QVariantMap>
#include <string>
#include <vector>

namespace tidemar::testing {

/// One call of "Notify", as it came over the bus.
struct Notification {
  std::string signature;
  QString applicationName;
  quint32 replacedID = 0;
  QString icon;
  QString summary;
  QString body;
  QStringList actions;
  QVariantMap hints;
  int expiry = 0;
};

/// A notification server that owns its name on a connection of its own, as long as it lives, and
/// writes down what it was given. Ids begin at `firstID`.
class FakeNotificationServer : public QDBusVirtualObject {
 public:
  enum class Manner { accepts, refuses, isSilent };

  explicit FakeNotificationServer(QDBusConnection bus, QStringList capabilities = {},
                                  quint32 firstID = 1);
  ~FakeNotificationServer() override;

  Manner manner = Manner::accepts;
  std::vector<Notification> notifications;

  bool handleMessage(const QDBusMessage& message, const QDBusConnection& bus) override;
  QString introspect(const QString&) const override { return {}; }

 private:
  QDBusConnection _bus;
  QStringList _capabilities;
  quint32 _nextID;
};

}  // namespace tidemar::testing
