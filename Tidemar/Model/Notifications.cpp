#include <QScopedValueRollback>
#include <algorithm>
#include <memory>
#include <vector>

#include "Tidemar/Model/AppModel.h"
#include "Tidemar/Model/ApplicationLog.h"
#include "Tidemar/Model/Failures.h"
#include "TidemarUI/State/Labels.h"
#include "TidemarUI/State/SystemBin.h"
#include "TidemarUI/State/TomorrowNotification.h"

namespace tidemar {

QCoro::Task<void> AppModel::notifyTomorrow(Date now) {
  const auto mayGo = [&](const FolderReport& report) { return mayGoTomorrow(report, now); };
  // Two at once would both see that nothing was delivered yet.
  if (_isNotifying || std::ranges::none_of(reports(), mayGo)) co_return;
  const QScopedValueRollback notifying(_isNotifying, true);
  const auto calendar = std::make_shared<const Calendar>(_services.currentCalendar());
  const auto compose = [snapshot = _snapshot, calendar, now, bin = SystemBin::name()] {
    std::vector<TomorrowNotification> notifications;
    for (const FolderReport& report : snapshot->reports) {
      if (auto notification = tomorrowNotification(report, now, *calendar, bin))
        notifications.push_back(*std::move(notification));
    }
    return notifications;
  };
  const std::vector<TomorrowNotification> notifications =
      co_await detached(_services.executor, compose);
  for (const TomorrowNotification& notification : notifications)
    co_await notifyOnce(notification.identifier, now, notification.title, notification.body);
}

QCoro::Task<void> AppModel::resumeNotifications() {
  refreshSystemState();
  co_await notifyTomorrow(_services.currentDate());
}

QCoro::Task<void> AppModel::tellThatItGoesOn() {
  constexpr const char* key = "toldThatItGoesOn";
  if (_services.standardDefaults.boolean(key).value_or(false)) co_return;
  const bool isTold = co_await postNotification("goesOn", std::string(labels::goesOn),
                                                std::string(labels::goesOnExplanation));
  if (!isTold) co_return;
  try {
    _services.standardDefaults.setBoolean(key, true);
  } catch (...) {
    applicationLog().log(LogLevel::error, "Couldn't store a setting: %{public}s",
                         textForLog(std::current_exception()));
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
  } catch (...) {
    applicationLog().log(LogLevel::error, "Notification failed: %{public}s",
                         textForLog(std::current_exception()));
  }
}

QCoro::Task<bool> AppModel::postNotification(std::string identifier, std::string title,
                                             std::string body) {
  try {
    co_await _services.notifications.add(identifier, title, body);
    co_return true;
  } catch (...) {
    applicationLog().log(LogLevel::error, "Notification failed: %{public}s",
                         textForLog(std::current_exception()));
  }
  co_return false;
}

}  // namespace tidemar
