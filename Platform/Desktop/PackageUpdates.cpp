#include "Platform/Desktop/PackageUpdates.h"

#include <QCoroDBusPendingCall>
#include <QCoroProcess>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDesktopServices>
#include <QProcess>
#include <QUrl>
#include <stdexcept>
#include <utility>

#include "Platform/Desktop/Alerts.h"
#include "Platform/Desktop/PackageTransaction.h"

namespace tidemar {
namespace {

const QString serviceName = QStringLiteral("org.freedesktop.PackageKit");
constexpr quint64 noFilter = 1U << 1U;  // By its own bit.
const QUrl softwareCentrePage(QStringLiteral("appstream:app.quernly.tidemar"));

/// Whether a program takes URLs of a scheme. Without one they would go to a web browser.
QCoro::Task<bool> isHandled(QString scheme) {
  QProcess query;
  const QStringList arguments = {QStringLiteral("query"), QStringLiteral("default"),
                                 QStringLiteral("x-scheme-handler/") + scheme};
  const bool isStarted = co_await qCoro(query).start(QStringLiteral("xdg-mime"), arguments);
  if (!isStarted) co_return false;
  co_await qCoro(query).waitForFinished();
  co_return !query.readAllStandardOutput().trimmed().isEmpty();
}

}  // namespace

PackageUpdates::PackageUpdates(QDBusConnection systemBus, std::optional<std::string> package,
                               UpdateTexts texts, Alerts& alerts, QObject* parent)
    : UpdateService(parent), _bus(std::move(systemBus)), _texts(std::move(texts)), _alerts(alerts) {
  if (!package || !_bus.isConnected()) return;
  _package = QString::fromStdString(*package);
  lookForService();
}

QCoro::Task<void> PackageUpdates::lookForService() {
  // Without starting it: most who run Tidemar never ask.
  for (const char* list : {"ListNames", "ListActivatableNames"}) {
    const QDBusMessage answer = co_await _bus.interface()->asyncCall(QString::fromLatin1(list));
    if (!answer.arguments().value(0).toStringList().contains(serviceName)) continue;
    _isThere = true;
    emit canCheckForUpdatesChanged();
    co_return;
  }
}

void PackageUpdates::checkForUpdates() {
  if (canCheckForUpdates()) lookForUpdate();
}

QCoro::Task<void> PackageUpdates::lookForUpdate() {
  _isChecking = true;
  emit canCheckForUpdatesChanged();
  std::string failure;
  bool isThere = false;
  try {
    isThere = co_await isUpdateThere();
  } catch (const std::runtime_error& error) {
    failure = error.what();
  }
  if (!failure.empty()) {
    _alerts.run({.message = _texts.failed, .information = failure});
  } else if (isThere) {
    co_await showUpdate();
  } else {
    _alerts.run({.message = _texts.isUpToDate, .information = {}});
  }
  _isChecking = false;
  emit canCheckForUpdatesChanged();
}

QCoro::Task<bool> PackageUpdates::isUpdateThere() {
  // By lists that are a week old there would seem to be nothing new.
  const QVariantList unforced = {false};
  co_await PackageTransaction::run(_bus, QStringLiteral("RefreshCache"), unforced);
  const QVariantList withoutFilter = {noFilter};
  const QStringList updates =
      co_await PackageTransaction::run(_bus, QStringLiteral("GetUpdates"), withoutFilter);
  const QString ours = _package + u';';
  for (const QString& update : updates) {
    if (update.startsWith(ours)) co_return true;
  }
  co_return false;
}

QCoro::Task<void> PackageUpdates::showUpdate() {
  const bool hasSoftwareCentre = co_await isHandled(softwareCentrePage.scheme());
  if (hasSoftwareCentre && QDesktopServices::openUrl(softwareCentrePage)) co_return;
  _alerts.run({.message = _texts.newVersion, .information = _texts.newVersionHint});
}

}  // namespace tidemar
