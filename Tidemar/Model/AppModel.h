#pragma once

#include <QCoroTask>
#include <QObject>
#include <QTimer>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Tidemar/Model/Services.h"
#include "TidemarKit/ClockCheck.h"
#include "TidemarKit/Engine/Engine.h"
#include "TidemarKit/Engine/RunGate.h"
#include "TidemarKit/FolderReport.h"

namespace tidemar {

/// The one object that holds what the screens show, carries out every command of the user and
/// clears the folders in background cycles. All of it belongs to the main thread; reading folders,
/// runs and the database are done by detached tasks that it awaits. Lives as long as the process.
///
/// No operation throws: a command's failure is shown to the user, a cycle's is logged.
class AppModel : public QObject {
  Q_OBJECT
 public:
  /// Makes the data folder, opens the store and reads the system's state. Without a database the
  /// program can't go on: the user is told, and the process ends with status 1.
  explicit AppModel(Services services, QObject* parent = nullptr);
  ~AppModel() override;

  /// Starts the first cycle as soon as the main thread is free, and the hourly ones. Call once.
  /// Wake-ups and windows coming forward reach the model by `runBackgroundCycle` and
  /// `refreshSystemState`.
  void startSchedule();

  const std::vector<FolderReport>& reports() const noexcept {
    return _reports;
  }  ///< In the store's order.
  const std::vector<JournalEntry>& journal() const noexcept {
    return _journal;
  }  ///< Of the last 7 days.
  std::int64_t freeSpace() const noexcept {
    return _freeSpace;
  }  ///< Bytes on the home's volume; 0 if unknown.
  bool isFinderExtensionOff() const noexcept { return _isFinderExtensionOff; }
  bool isLoginItemEnabled() const noexcept { return _isLoginItemEnabled; }
  bool loginItemNeedsApproval() const noexcept { return _loginItemNeedsApproval; }
  bool isNotificationAuthorized() const noexcept { return _isNotificationAuthorized; }
  bool isRunning() const noexcept { return _isRunning; }  ///< A background cycle is under way.

  /// The report of the folder at a place, however the place is written.
  const FolderReport* reportForFolderAt(const FileURL& url) const;

  /// Reads every folder and the journal anew.
  QCoro::Task<void> refreshReports();

  /// Asks the system anew what the user may have changed in its settings.
  void refreshSystemState();

  /// Reads, clears and reads again every folder. A call during a cycle returns at once and is
  /// dropped. By a clock that is plainly wrong nothing is cleared.
  QCoro::Task<void> runBackgroundCycle();

  /// Makes a folder known. None after a failure, which was shown.
  QCoro::Task<std::optional<Folder>> addFolder(FileURL url);
  QCoro::Task<void> setTemporary(Folder folder, bool isTemporary);
  QCoro::Task<void> removeFolder(Folder folder);
  QCoro::Task<void> changeSettings(Folder folder, TemporarySettings settings);

  /// Puts the items of these journal entries back, one after the other; one alert for all that
  /// fail.
  QCoro::Task<void> putBack(std::vector<std::int64_t> journalEntryIDs);

  void setOpensAtLogin(bool isOn);
  QCoro::Task<void> requestNotificationPermission();

  /// Handles a URL of the scheme "tidemar": makes the folder it names known and Temporary. Any
  /// other URL is ignored. The folder is answered once that is done.
  QCoro::Task<std::optional<FileURL>> open(std::string url);

  /// Stops clearing between two items, waits until the run and the command under way have written
  /// their end, and keeps any other that could be cut off from beginning. Call it before the
  /// process ends.
  void stopClearing();

 signals:
  void reportsChanged();
  void journalChanged();
  void freeSpaceChanged();
  void systemStateChanged();  ///< Extension, login item or notifications.
  void isRunningChanged();

 private:
  std::shared_ptr<Engine> makeEngine();
  void showFailure(const std::string& action, const std::exception& error);
  bool isClockTrusted(Date now);
  QCoro::Task<void> refreshNotificationAuthorization();
  void publishTemporaryPaths();
  QCoro::Task<void> notifyTomorrow(Date now);
  QCoro::Task<void> notifyOnce(std::string identifier, Date now, std::string title,
                               std::string body);
  QCoro::Task<bool> postNotification(std::string identifier, std::string title, std::string body);

  /// Stores a value and tells the observers if it is another one.
  template <class Value>
  void publish(Value& field, Value value, void (AppModel::*changed)()) {
    if (field == value) return;
    field = std::move(value);
    emit(this->*changed)();
  }

  Services _services;
  std::vector<FolderReport> _reports;
  std::vector<JournalEntry> _journal;
  std::int64_t _freeSpace = 0;
  bool _isFinderExtensionOff = false;
  bool _isLoginItemEnabled = false;
  bool _loginItemNeedsApproval = false;
  bool _isNotificationAuthorized = false;
  bool _isRunning = false;
  std::shared_ptr<RunGate> _runGate;
  std::shared_ptr<Engine> _engine;  ///< Shared with the tasks under way.
  ClockCheck _clockCheck;
  QTimer _hourlyTimer;
};

}  // namespace tidemar
