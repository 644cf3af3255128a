#include <algorithm>
#include <chrono>

#include "Tidemar/Model/AppModel.h"
#include "Tidemar/Model/ApplicationLog.h"
#include "Tidemar/Model/Detached.h"
#include "TidemarCore/Item.h"

namespace tidemar {

void AppModel::startSchedule() {
  QMetaObject::invokeMethod(
      this, [this] { runBackgroundCycle(); }, Qt::QueuedConnection);

  // A coarse timer of this length may be minutes off.
  _hourlyTimer.setTimerType(Qt::PreciseTimer);
  _hourlyTimer.setInterval(std::chrono::seconds(3600));
  connect(&_hourlyTimer, &QTimer::timeout, this, [this] { runBackgroundCycle(); });
  _hourlyTimer.start();
}

QCoro::Task<void> AppModel::runBackgroundCycle() {
  if (_isRunning) co_return;
  publish(_isRunning, true, &AppModel::isRunningChanged);
  const Date now = _services.currentDate();
  co_await refreshReports();

  // A folder that is added meanwhile waits for the next cycle.
  std::vector<std::int64_t> folderIDs;
  if (isClockTrusted(now)) {
    for (const FolderReport& report : _reports) {
      if (report.folder.id) folderIDs.push_back(*report.folder.id);
    }
  }
  for (const std::int64_t folderID : folderIDs) {
    const auto run = [engine = _engine, gate = _runGate, folderID, now] {
      engine->run(folderID, now, *gate);
    };
    try {
      co_await detached(run);
    } catch (const std::exception& error) {
      applicationLog().log(LogLevel::error, "Run of folder %lld failed: %{public}s", folderID,
                           textWithoutPath(error));
    }
  }
  co_await refreshReports();
  co_await notifyTomorrow(now);
  publish(_isRunning, false, &AppModel::isRunningChanged);
}

bool AppModel::isClockTrusted(Date now) {
  std::optional<Date> latestKnown;
  for (const FolderReport& report : _reports)
    latestKnown =
        laterDate(latestKnown, std::max(report.folder.createdAt, report.folder.lastRunAt));
  if (_clockCheck.isTrusted({now, _services.secondsSinceBoot()}, latestKnown)) return true;
  applicationLog().log(LogLevel::error, "Nothing is cleared yet: the clock was set far off");
  return false;
}

}  // namespace tidemar
