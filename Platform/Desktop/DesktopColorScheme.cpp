#include "Platform/Desktop/DesktopColorScheme.h"

#include <QCoroDBusPendingCall>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QPointer>
#include <utility>

namespace tidemar {
namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString objectPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString colorScheme = QStringLiteral("color-scheme");

/// The portal answers with a variant in a variant, and tells changes with one alone.
QVariant unwrapped(QVariant value) {
  while (value.canConvert<QDBusVariant>())
    value = value.value<QDBusVariant>().variant();
  return value;
}

DesktopColorScheme::Preference preferenceOf(const QVariant& value) {
  constexpr uint dark = 1;
  constexpr uint light = 2;
  switch (unwrapped(value).toUInt()) {
    case dark:
      return DesktopColorScheme::Preference::dark;
    case light:
      return DesktopColorScheme::Preference::light;
    default:
      return DesktopColorScheme::Preference::none;
  }
}

}  // namespace

DesktopColorScheme::DesktopColorScheme(QDBusConnection bus) : _bus(std::move(bus)) {}

void DesktopColorScheme::follow() {
  if (std::exchange(_isFollowing, true) || !_bus.isConnected()) return;
  // The toolkit connects to no slot of a type that it hasn't been told of.
  qRegisterMetaType<QDBusVariant>();
  // Of any sender: what comes from a name's owner of whom the toolkit hasn't learned yet it drops.
  _bus.connect(QString(), objectPath, settingsInterface, QStringLiteral("SettingChanged"), this,
               SLOT(takeChange(QString, QString, QDBusVariant)));
  _bus.connect(QString(), QStringLiteral("/KGlobalSettings"),
               QStringLiteral("org.kde.KGlobalSettings"), QStringLiteral("notifyChange"), this,
               SLOT(takePlasmaChange(int, int)));
  ask();
}

QCoro::Task<void> DesktopColorScheme::ask() {
  const QPointer<DesktopColorScheme> self(this);
  QDBusMessage request = QDBusMessage::createMethodCall(service, objectPath, settingsInterface,
                                                        QStringLiteral("Read"));
  request << appearance << colorScheme;
  const QDBusPendingCall pending = _bus.asyncCall(request);
  const QDBusMessage answer = co_await pending;
  if (self && answer.type() == QDBusMessage::ReplyMessage)
    tell(preferenceOf(answer.arguments().value(0)));
}

void DesktopColorScheme::takeChange(const QString& group, const QString& key,
                                    const QDBusVariant& value) {
  if (group == appearance && key == colorScheme) tell(preferenceOf(value.variant()));
}

void DesktopColorScheme::takePlasmaChange(int kind, int) {
  constexpr int colors = 0;
  if (kind == colors) tell(_preference);
}

void DesktopColorScheme::tell(Preference preference) {
  _preference = preference;
  emit told(preference);
}

}  // namespace tidemar
