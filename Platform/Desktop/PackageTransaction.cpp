#include "Platform/Desktop/PackageTransaction.h"

#include <QCoroDBusPendingCall>
#include <QCoroSignal>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <stdexcept>
#include <utility>

namespace tidemar {
namespace {

const QString serviceName = QStringLiteral("org.freedesktop.PackageKit");
const QString rootPath = QStringLiteral("/org/freedesktop/PackageKit");
const QString transactionInterface = QStringLiteral("org.freedesktop.PackageKit.Transaction");
const QString noAnswer = QStringLiteral("The package service doesn't answer.");
constexpr quint32 success = 1;

}  // namespace

QCoro::Task<QStringList> PackageTransaction::run(QDBusConnection systemBus, QString method,
                                                 QVariantList arguments) {
  const QDBusMessage request = QDBusMessage::createMethodCall(serviceName, rootPath, serviceName,
                                                              QStringLiteral("CreateTransaction"));
  const QDBusMessage answer = co_await systemBus.asyncCall(request);
  const QString path = answer.arguments().value(0).value<QDBusObjectPath>().path();
  if (answer.type() != QDBusMessage::ReplyMessage || path.isEmpty()) {
    throw std::runtime_error(noAnswer.toStdString());
  }
  PackageTransaction transaction(systemBus, path);
  transaction.begin(method, arguments);
  if (!transaction._error) co_await qCoro(&transaction, &PackageTransaction::ended);
  if (!transaction._error->isEmpty()) throw std::runtime_error(transaction._error->toStdString());
  co_return transaction._packages;
}

PackageTransaction::PackageTransaction(QDBusConnection systemBus, QString path)
    : _bus(std::move(systemBus)), _path(std::move(path)) {
  _bus.connect(serviceName, _path, transactionInterface, QStringLiteral("Package"), this,
               SLOT(package(quint32, QString, QString)));
  _bus.connect(serviceName, _path, transactionInterface, QStringLiteral("ErrorCode"), this,
               SLOT(errorCode(quint32, QString)));
  _bus.connect(serviceName, _path, transactionInterface, QStringLiteral("Finished"), this,
               SLOT(finished(quint32, quint32)));
  auto* watcher =
      new QDBusServiceWatcher(serviceName, _bus, QDBusServiceWatcher::WatchForUnregistration, this);
  connect(watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] { end(noAnswer); });
}

void PackageTransaction::begin(const QString& method, const QVariantList& arguments) {
  QDBusMessage request =
      QDBusMessage::createMethodCall(serviceName, _path, transactionInterface, method);
  request.setArguments(arguments);
  auto* answer = new QDBusPendingCallWatcher(_bus.asyncCall(request), this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
    if (answer->isError()) end(answer->error().message());
  });
}

void PackageTransaction::package(quint32, const QString& identifier, const QString&) {
  _packages << identifier;
}

void PackageTransaction::errorCode(quint32, const QString& details) {
  _details = details.trimmed();
}

void PackageTransaction::finished(quint32 exit, quint32) {
  if (exit == success) return end({});
  end(_details.isEmpty() ? QStringLiteral("The package service gave no reason.") : _details);
}

void PackageTransaction::end(const QString& error) {
  if (_error) return;
  _error = error;
  emit ended();
}

}  // namespace tidemar
