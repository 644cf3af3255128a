#pragma once

#include <QCoroTask>
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <optional>

namespace tidemar {

/// One job of PackageKit. Main thread.
class PackageTransaction : public QObject {
  Q_OBJECT
 public:
  /// Has PackageKit do a job, a method of org.freedesktop.PackageKit.Transaction, and answers the
  /// ids of the packages that it named ("name;version;architecture;origin"). Throws
  /// std::runtime_error with PackageKit's own sentence if the job failed, and with one of ours if
  /// PackageKit can't be asked or ends before the job does.
  static QCoro::Task<QStringList> run(QDBusConnection systemBus, QString method,
                                      QVariantList arguments);

 signals:
  void ended();

 private slots:
  void package(quint32 kind, const QString& identifier, const QString& summary);
  void errorCode(quint32 code, const QString& details);
  void finished(quint32 exit, quint32 milliseconds);

 private:
  PackageTransaction(QDBusConnection systemBus, QString path);

  void begin(const QString& method, const QVariantList& arguments);
  void end(const QString& error);

  QDBusConnection _bus;
  QString _path;
  QStringList _packages;
  QString _details;               ///< What PackageKit says about a failure.
  std::optional<QString> _error;  ///< Empty for a success; none until it ended.
};

}  // namespace tidemar
