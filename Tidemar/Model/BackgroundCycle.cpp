#include <QScopedValueRollback>
#include <algorithm>
#include <chrono>
#include <span>

#include "Tidemar/Model/AppModel.h"
#include "Tidemar/Model/ApplicationLog.h"
#include "Tidemar/Model/Failures.h"

namespace tidemar {
namespace {

/// The first of them: they are kept as long as the folder stands, and nobody reads a million.
std::vector<LeftItem> leftItems(const std::vector<RemovalFailure>& failures) {
  constexpr std::size_t most = 10;
  std::vector<LeftItem> left;
  for (const RemovalFailure& failure : std::span(failures).first(std::min(most, failures.size()))) {
    const FileURL& url = failure.item.url;
    left.push_back({url, leftItemLine(url.path(), failure.error)});
  }
  return left;
}

}  // namespace

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
  const QScopedValueRollback running(_isRunning, true);
  try {
    co_await clearFolders();
  } catch (...) {
    applicationLog().log(LogLevel::error, "A cycle ended early: %{public}s",
                         textForLog(std::current_exception()));
  }
}

QCoro::Task<void> AppModel::clearFolders() {
  const Date now = _services.currentDate();
  letCommandsFoldersGo();
  const std::shared_ptr<const Snapshot> before = _snapshot;
  // Not one that others share: it has to begin now, and what it saw is the list.
  const NumberedSnapshot read = co_await readAndPublish();
  const std::shared_ptr<const Snapshot> listed = read.snapshot ? read.snapshot : before;
  const auto since = std::make_shared<SinceReading>();
  since->number = read.number;
  if (isClockTrusted(now, listed->reports)) {
    const auto left = std::make_shared<LeftItems>();
    for (const FolderReport& report : listed->reports) {
      // One that couldn't be read may or may not have been Temporary.
      if (!report.folder.id || !report.status) continue;
      if (isTemporary(report)) {
        Cleared cleared = co_await clear(*report.folder.id, now);
        if (cleared.untouched)
          since->untouched.emplace(*report.folder.id, std::move(cleared.untouched));
        if (!cleared.left.empty()) left->emplace(*report.folder.id, std::move(cleared.left));
      } else {
        co_await passOver(report.folder, now);
      }
    }
    _leftItems = left;
  }
  co_await readAndPublish(since);
  co_await notifyTomorrow(now);
}

QCoro::Task<AppModel::Cleared> AppModel::clear(std::int64_t folderID, Date now) {
  return treat(
      folderID, [engine = _engine, gate = _runGate, &executor = _services.executor, folderID, now] {
        RunResult result = engine->run(folderID, now, *gate);
        if (!result.failures.empty()) {
          applicationLog().log(LogLevel::error, "Run of folder %lld left %ld items that were to go",
                               folderID, result.failures.size());
        }
        Cleared cleared;
        cleared.left = leftItems(result.failures);
        if (result.untouched)
          cleared.untouched = sharedDetached(executor, *std::move(result.untouched));
        return cleared;
      });
}

/// What a run does to a folder that isn't Temporary; one that is by now waits for the next cycle.
QCoro::Task<AppModel::Cleared> AppModel::passOver(Folder seen, Date now) {
  return treat(*seen.id, [engine = _engine, seen, now] {
    engine->store().change(seen.id, [&](Folder& row) {
      if (row.lastRunAt == seen.lastRunAt) row.lastRunAt = now;
    });
    return Cleared();
  });
}

/// A cycle's work on one folder, of which every failure is logged. One that was removed meanwhile
/// has nothing to be cleared, and isn't missed.
template <class Work>
QCoro::Task<AppModel::Cleared> AppModel::treat(std::int64_t folderID, Work work) {
  const auto unlessRemoved = [engine = _engine, folderID, work] {
    try {
      return work();
    } catch (...) {
      if (!engine->store().folder(folderID)) return Cleared();
      throw;
    }
  };
  try {
    co_return co_await detached(_services.executor, unlessRemoved);
  } catch (...) {
    applicationLog().log(LogLevel::error, "Run of folder %lld failed: %{public}s", folderID,
                         textForLog(std::current_exception()));
  }
  co_return Cleared();
}

/// What commands made known or Temporary before now may be cleared; what those under way make so
/// may not be.
void AppModel::letCommandsFoldersGo() {
  for (const std::int64_t folderID : _toLetGo)
    _runGate->letGo(folderID);
  _toLetGo.clear();
}

bool AppModel::isClockTrusted(Date now, const std::vector<FolderReport>& reports) {
  std::optional<Date> latestKnown;
  for (const FolderReport& report : reports)
    latestKnown =
        laterDate(latestKnown, std::max(report.folder.createdAt, report.folder.lastRunAt));
  if (_clockCheck.isTrusted({now, _services.secondsSinceBoot()}, latestKnown)) return true;
  applicationLog().log(LogLevel::error, "Nothing is cleared yet: the clock was set far off");
  return false;
}

}  // namespace tidemar
