#pragma once

#include <QCoroTask>
#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QString>

namespace tidemar {

/// Whether the user wants dark screens, as the desktop's settings portal says. Plasma also tells of
/// a change by itself. Main thread.
class DesktopColorScheme : public QObject {
  Q_OBJECT
 public:
  enum class Preference { none, dark, light };

  explicit DesktopColorScheme(QDBusConnection bus);

  /// Asks the portal, which the bus may start for that, and follows it from now on. Without one
  /// only Plasma's changes are told. Further calls do nothing.
  void follow();

 signals:
  /// The answer, and every change after it; the same once more where only the colours are others.
  void told(tidemar::DesktopColorScheme::Preference preference);

 private slots:
  void takeChange(const QString& group, const QString& key, const QDBusVariant& value);
  void takePlasmaChange(int kind, int detail);

 private:
  QCoro::Task<void> ask();
  void tell(Preference preference);

  QDBusConnection _bus;
  bool _isFollowing = false;
  Preference _preference = Preference::none;
};

}  // namespace tidemar
