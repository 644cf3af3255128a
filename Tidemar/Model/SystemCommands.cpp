#include "Tidemar/Model/AppModel.h"
#include "Tidemar/Model/ApplicationLog.h"
#include "Tidemar/Model/Failures.h"
#include "TidemarUI/State/FailureLine.h"

namespace tidemar {

void AppModel::setOpensAtLogin(bool isOn) {
  std::exception_ptr failure;
  try {
    if (isOn) {
      _services.loginItem.registerItem();
    } else {
      _services.loginItem.unregisterItem();
    }
  } catch (...) {
    failure = std::current_exception();
  }
  if (failure) showFailure(settingOpensAtLogin(isOn), failure);
  refreshSystemState();
}

QCoro::Task<void> AppModel::requestNotificationPermission() {
  try {
    const bool isGranted = co_await _services.notifications.requestAuthorization();
    publish(_isNotificationAuthorized, isGranted, &AppModel::systemStateChanged);
  } catch (...) {
    applicationLog().log(LogLevel::error, "Notification permission: %{public}s",
                         textForLog(std::current_exception()));
  }
}

}  // namespace tidemar
