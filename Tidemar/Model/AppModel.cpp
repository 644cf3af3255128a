#include "Tidemar/Model/AppModel.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "Tidemar/Model/ApplicationLog.h"
#include "Tidemar/Model/DataDirectory.h"
#include "Tidemar/Model/Detached.h"
#include "Tidemar/Model/FatalFailure.h"
#include "TidemarUI/State/FailureLine.h"
#include "TidemarUI/State/SystemBin.h"

namespace tidemar {
namespace {

constexpr double journalSeconds = 7 * secondsPerDay;

struct Reading {
  std::vector<FolderReport> reports;
  std::vector<JournalEntry> journal;
  std::int64_t freeSpace = 0;
};

std::int64_t freeSpaceOfHome(const FileManager& fileManager) {
  try {
    return fileManager.volumeCapacity(fileManager.homeDirectoryForCurrentUser())
        .available.value_or(0);
  } catch (const std::exception&) {
    // An unknown free space is shown as none; the rules read their own.
    return 0;
  }
}

FolderReport readFolder(Engine& engine, const Folder& folder, Date now) {
  FolderReport report{folder, std::nullopt};
  if (!folder.id) return report;
  try {
    report.status = engine.status(*folder.id, now);
  } catch (const std::exception& error) {
    // One folder that can't be read must not hide the others.
    applicationLog().log(LogLevel::error, "Couldn't read folder %lld: %{public}s", *folder.id,
                         textWithoutPath(error));
  }
  return report;
}

Reading readEverything(Engine& engine, const FileManager& fileManager, Date since,
                       const std::function<Date()>& currentDate) {
  Reading reading;
  for (const Folder& folder : engine.store().folders()) {
    reading.reports.push_back(readFolder(engine, folder, currentDate()));
  }
  reading.journal = engine.store().journalSince(since);
  reading.freeSpace = freeSpaceOfHome(fileManager);
  return reading;
}

}  // namespace

AppModel::AppModel(Services services, QObject* parent)
    : QObject(parent),
      _services(std::move(services)),
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

const FolderReport* AppModel::reportForFolderAt(const FileURL& url) const {
  std::string path;
  try {
    path = _engine->canonicalPath(url);
  } catch (const std::exception&) {
    // A place that can't be read is the place of no known folder.
    return nullptr;
  }
  const auto found =
      std::ranges::find(_reports, path, [](const auto& report) { return report.folder.path; });
  return found == _reports.end() ? nullptr : &*found;
}

QCoro::Task<void> AppModel::refreshReports() {
  const Date since = _services.currentDate() - journalSeconds;
  const auto readAll = [engine = _engine, &fileManager = _services.fileManager, since,
                        currentDate = _services.currentDate] {
    return readEverything(*engine, fileManager, since, currentDate);
  };
  Reading reading;
  try {
    reading = co_await detached(readAll);
  } catch (const std::exception& error) {
    applicationLog().log(LogLevel::error, "Couldn't read the folders: %{public}s",
                         textWithoutPath(error));
    co_return;
  }
  _reports = std::move(reading.reports);
  emit reportsChanged();
  publish(_journal, std::move(reading.journal), &AppModel::journalChanged);
  publishTemporaryPaths();
  publish(_freeSpace, reading.freeSpace, &AppModel::freeSpaceChanged);
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

void AppModel::showFailure(const std::string& action, const std::exception& error) {
  applicationLog().log(LogLevel::error, "Couldn't %{public}s: %{public}s", action,
                       textWithoutPath(error));
  _services.alerts.run(
      {.message = failureTitle(action), .information = failureLine(error, SystemBin::name())});
}

void AppModel::stopClearing() {
  _runGate->close();
  _runGate->waitUntilLeft();
}

}  // namespace tidemar
