#pragma once

#include <QCoroTask>
#include <QDBusConnection>
#include <QString>
#include <optional>
#include <string>

#include "Platform/Desktop/UpdateService.h"

namespace tidemar {

class Alerts;

/// What the user is told of a check.
struct UpdateTexts {
  std::string failed;  ///< The title over the reason.
  std::string isUpToDate;
  std::string newVersion;
  std::string newVersionHint;  ///< How to install it, where no program is there to show it.
};

/// Updates by the system's packages, through PackageKit. It can check where there is a PackageKit
/// and Tidemar came in a package; a newer version is shown in the software centre, which installs
/// it. Outlives every check that is under way.
class PackageUpdates : public UpdateService {
  Q_OBJECT
 public:
  /// `package` is the name of the package that Tidemar came in, if it did.
  PackageUpdates(QDBusConnection systemBus, std::optional<std::string> package, UpdateTexts texts,
                 Alerts& alerts, QObject* parent = nullptr);

  bool canCheckForUpdates() const override { return _isThere && !_isChecking; }
  void checkForUpdates() override;

 private:
  QCoro::Task<void> lookForService();
  QCoro::Task<void> lookForUpdate();
  QCoro::Task<bool> isUpdateThere();
  QCoro::Task<void> showUpdate();

  QDBusConnection _bus;
  QString _package;
  UpdateTexts _texts;
  Alerts& _alerts;
  bool _isThere = false;  ///< PackageKit, and a package of ours.
  bool _isChecking = false;
};

}  // namespace tidemar
