#include "Tidemar/Model/AppModel.h"
#include "Tidemar/Model/ApplicationLog.h"
#include "TidemarUI/State/FailureLine.h"

namespace tidemar {

void AppModel::setOpensAtLogin(bool isOn) {
  try {
    if (isOn) {
      _services.loginItem.registerItem();
    } else {
      _services.loginItem.unregisterItem();
    }
  } catch (const std::exception& error) {
    showFailure(settingOpensAtLogin(isOn), error);
  }
  refreshSystemState();
}

QCoro::Task<void> AppModel::requestNotificationPermission() {
  try {
    const bool isGranted = co_await _services.notifications.requestAuthorization();
    publish(_isNotificationAuthorized, isGranted, &AppModel::systemStateChanged);
  } catch (const std::exception& error) {
    applicationLog().log(LogLevel::error, "Notification permission: %{public}s",
                         textWithoutPath(error));
  }
}

}  // namespace tidemar
