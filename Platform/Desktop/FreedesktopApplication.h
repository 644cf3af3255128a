#pragma once

#include <QDBusAbstractAdaptor>
#include <QStringList>
#include <QVariantMap>
#include <string>

namespace tidemar {

/// The bus interface org.freedesktop.Application of the Desktop Entry specification.
class FreedesktopApplication : public QDBusAbstractAdaptor {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
 public:
  explicit FreedesktopApplication(QObject* parent) : QDBusAbstractAdaptor(parent) {}

 public slots:
  void Activate(const QVariantMap&) { emit activated(); }
  void Open(const QStringList& urls, const QVariantMap&) {
    for (const QString& url : urls)
      emit opened(url.toStdString());
  }
  void ActivateAction(const QString& name, const QVariantList& parameters, const QVariantMap&) {
    emit actionActivated(name.toStdString(), parameters);
  }

 signals:
  void activated();
  void opened(const std::string& url);
  void actionActivated(const std::string& name, const QVariantList& parameters);
};

}  // namespace tidemar
