#include "Tidemar/Model/AppModel.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "Tidemar/Model/ApplicationLog.h"
#include "Tidemar/Model/DataDirectory.h"
#include "Tidemar/Model/Failures.h"
#include "Tidemar/Model/FatalFailure.h"
#include "TidemarUI/State/FailureLine.h"

namespace tidemar {
namespace {

/// How long the end of the process waits for commands.
constexpr std::chrono::seconds commandPatience(5);

/// How long it waits for a change of the disk and its record, which should not be parted.
constexpr std::chrono::seconds itemPatience(20);

}  // namespace

AppModel::AppModel(Services services, QObject* parent)
    : QObject(parent),
      _services(std::move(services)),
      _snapshot(std::make_shared<Snapshot>()),
      _runGate(std::make_shared<RunGate>()),
      _engine(makeEngine()) {
  refreshSystemState();
}

AppModel::~AppModel() = default;

std::shared_ptr<Engine> AppModel::makeEngine() {
  try {
    const FileURL file = makeDataDirectory().appendingPathComponent("tidemar.sqlite");
    return std::make_shared<Engine>(std::make_unique<Store>(file.path()), _services.fileManager);
  } catch (const std::exception& error) {
    endWithFatalFailure(_services.alerts, error);
  }
}

const FolderReport* AppModel::reportForFolder(std::int64_t id) const {
  const auto found =
      std::ranges::find(reports(), id, [](const auto& report) { return report.folder.id; });
  return found == reports().end() ? nullptr : &*found;
}

const FolderReport* AppModel::reportForFolderAt(const FileURL& url) const {
  const auto found = std::ranges::find(reports(), url.path(),
                                       [](const auto& report) { return report.folder.path; });
  return found == reports().end() ? nullptr : &*found;
}

QCoro::Task<void> AppModel::refreshReports() {
  if (!_askedReading) _askedReading = std::make_shared<Occurrence>();
  const std::shared_ptr<Occurrence> asked = _askedReading;
  if (!_isServingRefreshes) serveRefreshes();
  co_await *asked;
}

QCoro::Task<void> AppModel::serveRefreshes() {
  _isServingRefreshes = true;
  while (_askedReading) {
    const auto asked = std::exchange(_askedReading, nullptr);
    co_await readAndPublish();
    asked->happen();
  }
  _isServingRefreshes = false;
}

/// Answers what was read, published or not; nothing after a failure, which is logged. What was read
/// since another reading isn't read again, unless a third one began in between, which may have seen
/// more.
QCoro::Task<AppModel::NumberedSnapshot> AppModel::readAndPublish(
    std::shared_ptr<const SinceReading> since) {
  // The number is taken where the reading begins, which may be long after it was asked for.
  const auto number = std::make_shared<std::uint64_t>(0);
  const auto read = [engine = _engine, &services = _services, last = _lastReading, number, since,
                     left = _leftItems] {
    *number = ++*last;
    const bool isNext = since && *number == since->number + 1;
    return sharedDetached(services.executor,
                          readSnapshot(*engine, services.fileManager, services.currentDate,
                                       isNext ? since->untouched : RecentReports(), *left));
  };
  std::shared_ptr<const Snapshot> snapshot;
  try {
    snapshot = co_await detached(_services.executor, read);
    std::shared_ptr<const Snapshot> shown;
    bool hasNewJournal = false;
    while (shown != _snapshot) {
      shown = _snapshot;
      const auto compare = [snapshot, shown] { return snapshot->journal != shown->journal; };
      hasNewJournal = co_await detached(_services.executor, compare);
    }
    // It may show what later ones know to be over.
    if (*number < _shownReading) co_return {snapshot, *number};
    _shownReading = *number;
    _snapshot = snapshot;
    emit reportsChanged();
    if (hasNewJournal) emit journalChanged();
    if (snapshot->freeSpace != shown->freeSpace) emit freeSpaceChanged();
    publishTemporaryPaths();
  } catch (...) {
    applicationLog().log(LogLevel::error, "Couldn't read the folders: %{public}s",
                         textForLog(std::current_exception()));
  }
  co_return {snapshot, *number};
}

/// Shows a folder's new rules before its disk is read by them, which can take long. No reading that
/// began before them is shown after that.
QCoro::Task<void> AppModel::showPresentRules(std::int64_t folderID) {
  const std::shared_ptr<const Snapshot> shown = _snapshot;
  const auto number = std::make_shared<std::uint64_t>(0);
  const auto change = [engine = _engine, &executor = _services.executor, last = _lastReading,
                       number, shown, folderID] {
    *number = ++*last;
    return sharedDetached(executor, withPresentRules(*shown, *engine, folderID));
  };
  try {
    const auto changed = co_await detached(_services.executor, change);
    if (_snapshot != shown) co_return;
    _shownReading = *number;
    _snapshot = changed;
    emit reportsChanged();
  } catch (...) {
    // The reading that follows meets the same failure and logs it.
  }
}

void AppModel::refreshSystemState() {
  publish(_isFinderExtensionOff, !_services.finderExtension.isEnabled(),
          &AppModel::systemStateChanged);
  publish(_isLoginItemEnabled, _services.loginItem.status() == LoginItem::Status::enabled,
          &AppModel::systemStateChanged);
  publish(_loginItemNeedsApproval,
          _services.loginItem.status() == LoginItem::Status::requiresApproval,
          &AppModel::systemStateChanged);
  refreshNotificationAuthorization();
}

QCoro::Task<void> AppModel::refreshNotificationAuthorization() {
  const bool isAuthorized = co_await _services.notifications.isAuthorized();
  publish(_isNotificationAuthorized, isAuthorized, &AppModel::systemStateChanged);
}

void AppModel::showFailure(const std::string& action, const std::exception_ptr& error) {
  applicationLog().log(LogLevel::error, "Couldn't %{public}s: %{public}s", action,
                       textForLog(error));
  _services.alerts.run({.message = failureTitle(action), .information = lineForUser(error)});
}

QCoro::Task<void> AppModel::finishCommands() {
  _runGate->close();
  if (_commandsUnderWay == 0) co_return;
  if (!_commandsEnded) {
    _commandsEnded = std::make_shared<Occurrence>();
    QTimer::singleShot(commandPatience, this, [ended = _commandsEnded] { ended->happen(); });
  }
  const auto ended = _commandsEnded;
  co_await *ended;
}

void AppModel::stopClearing() {
  _runGate->shut();
  const bool hasLeft = _runGate->waitUntilLeft(itemPatience);
  const bool isDone = _runGate->waitForCommands(commandPatience);
  if (!hasLeft || !isDone)
    applicationLog().log(LogLevel::error, "Ended before what was under way was over");
}

}  // namespace tidemar
