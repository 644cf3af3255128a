#pragma once

#include <QDBusAbstractAdaptor>
#include <QStringList>
#include <QVariantMap>

#include "Platform/Desktop/ApplicationInstance.h"

namespace tidemar {

/// The bus interface org.freedesktop.Application of the Desktop Entry specification; what it is
/// asked for the instance tells.
class FreedesktopApplication : public QDBusAbstractAdaptor {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
 public:
  explicit FreedesktopApplication(ApplicationInstance* instance)
      : QDBusAbstractAdaptor(instance), _instance(*instance) {}

 public slots:
  // NOLINTBEGIN(readability-identifier-naming): the names of the interface's methods.
  void Activate(const QVariantMap& platformData) {
    accept(ActivationToken::fromPlatformData(platformData));
    emit _instance.activated();
  }
  void Open(const QStringList& urls, const QVariantMap& platformData) {
    accept(ActivationToken::fromPlatformData(platformData));
    for (const QString& url : urls)
      emit _instance.opened(url.toStdString());
  }
  void ActivateAction(const QString& name, const QVariantList& parameters,
                      const QVariantMap& platformData) {
    accept(ActivationToken::fromPlatformData(platformData));
    emit _instance.actionActivated(name.toStdString(), parameters);
  }
  // NOLINTEND(readability-identifier-naming)

 private:
  ApplicationInstance& _instance;
};

}  // namespace tidemar
