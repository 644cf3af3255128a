#include "Tidemar/Model/AppModel.h"
#include "Tidemar/Model/ApplicationLog.h"
#include "TidemarUI/State/SystemBin.h"
#include "TidemarUI/State/TomorrowNotification.h"

namespace tidemar {

QCoro::Task<void> AppModel::notifyTomorrow(Date now) {
  // The reports may be replaced while a notification is under way.
  const std::vector<FolderReport> reports = _reports;
  for (const FolderReport& report : reports) {
    const auto notification =
        tomorrowNotification(report, now, _services.currentCalendar(), SystemBin::name());
    if (!notification) continue;
    co_await notifyOnce(notification->identifier, now, notification->title, notification->body);
  }
}

QCoro::Task<void> AppModel::notifyOnce(std::string identifier, Date now, std::string title,
                                       std::string body) {
  const std::string today = notificationStamp(now);
  const std::string key = notificationStampKey(identifier);
  if (_services.standardDefaults.string(key) == today) co_return;
  if (!co_await postNotification(identifier, title, body)) co_return;
  try {
    _services.standardDefaults.setString(key, today);
  } catch (const std::exception& error) {
    applicationLog().log(LogLevel::error, "Notification failed: %{public}s",
                         textWithoutPath(error));
  }
}

QCoro::Task<bool> AppModel::postNotification(std::string identifier, std::string title,
                                             std::string body) {
  try {
    co_await _services.notifications.add(identifier, title, body);
    co_return true;
  } catch (const std::exception& error) {
    applicationLog().log(LogLevel::error, "Notification failed: %{public}s",
                         textWithoutPath(error));
  }
  co_return false;
}

}  // namespace tidemar
