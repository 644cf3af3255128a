#pragma once

#include <QCoroTask>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QString>

namespace tidemar {

/// Whether the user wants dark screens, as the desktop's settings portal says. Main thread.
class DesktopColorScheme : public QObject {
  Q_OBJECT
 public:
  enum class Preference { none, dark, light };

  explicit DesktopColorScheme(QDBusConnection bus);

  /// Asks the portal, which the bus may start for that, and follows it from now on. Without one
  /// nothing is ever told. Further calls do nothing.
  void follow();

 signals:
  /// The answer, and every change after it.
  void told(tidemar::DesktopColorScheme::Preference preference);

 private slots:
  void takeChange(const QString& group, const QString& key, const QDBusVariant& value);

 private:
  QCoro::Task<void> ask();

  QDBusConnection _bus;
  bool _isFollowing = false;
};

}  // namespace tidemar
