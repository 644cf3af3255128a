#pragma once

#include <QCoroTask>
#include <QObject>
#include <QTimer>
#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Tidemar/Model/Detached.h"
#include "Tidemar/Model/Failures.h"
#include "Tidemar/Model/Occurrence.h"
#include "Tidemar/Model/PendingEdits.h"
#include "Tidemar/Model/Services.h"
#include "Tidemar/Model/Snapshot.h"
#include "TidemarKit/ClockCheck.h"
#include "TidemarKit/Engine/Engine.h"
#include "TidemarKit/Engine/RunGate.h"

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

  /// What the last reading saw that was published; never null. May be kept and handed to any
  /// thread.
  std::shared_ptr<const Snapshot> snapshot() const noexcept { return _snapshot; }

  /// Carries out what the screens need off the main thread.
  Executor& executor() const noexcept { return _services.executor; }

  // Parts of the snapshot, which the next one takes along.
  const std::vector<FolderReport>& reports() const noexcept { return _snapshot->reports; }
  const std::vector<JournalEntry>& journal() const noexcept { return _snapshot->journal; }
  std::int64_t freeSpace() const noexcept { return _snapshot->freeSpace; }

  bool isFinderExtensionOff() const noexcept { return _isFinderExtensionOff; }
  bool isLoginItemEnabled() const noexcept { return _isLoginItemEnabled; }
  bool loginItemNeedsApproval() const noexcept { return _loginItemNeedsApproval; }
  bool isNotificationAuthorized() const noexcept { return _isNotificationAuthorized; }

  /// The report of the folder with that row id, or of the one whose path is written like that:
  /// absolute and without links, as the reports have it. No disk is asked. Null without one.
  const FolderReport* reportForFolder(std::int64_t id) const;
  const FolderReport* reportForFolderAt(const FileURL& url) const;

  /// Reads every folder and the journal anew, not before this call. Calls that come while the disks
  /// are still being read share the next reading.
  QCoro::Task<void> refreshReports();

  /// Asks the system anew what the user may have changed in its settings.
  void refreshSystemState();

  /// Reads, clears and reads again every folder. A call during a cycle returns at once and is
  /// dropped. What its own reading at its beginning doesn't see as known and Temporary, and what a
  /// command makes known or Temporary after that, isn't cleared before the next one. By a clock
  /// that is plainly wrong nothing is cleared.
  QCoro::Task<void> runBackgroundCycle();

  /// Makes a folder known. None after a failure, which was shown.
  QCoro::Task<std::optional<Folder>> addFolder(FileURL url);
  QCoro::Task<void> setTemporary(Folder folder, bool isTemporary);
  QCoro::Task<void> removeFolder(Folder folder);

  /// Takes over what differs between the settings that the user saw and those that they want. Edits
  /// of one folder count in the order of the calls.
  QCoro::Task<void> changeSettings(std::int64_t folderID, TemporarySettings shown,
                                   TemporarySettings wanted);

  /// Puts the items of these journal entries back, one after the other; one alert for all that
  /// fail. What is on its way back already, or back, is passed over.
  QCoro::Task<void> putBack(std::vector<std::int64_t> journalEntryIDs);

  /// Delivers what no notification service took today. Call when one has come.
  QCoro::Task<void> resumeNotifications();

  /// Tells the user that Tidemar goes on without a window, the first time that this is called.
  QCoro::Task<void> tellThatItGoesOn();

  void setOpensAtLogin(bool isOn);
  QCoro::Task<void> requestNotificationPermission();

  /// Handles a URL of the scheme "tidemar": makes the folder it names known and Temporary. Any
  /// other URL is ignored. The folder is answered once that is done, as its report has it.
  QCoro::Task<std::optional<FileURL>> followLink(std::string url);

  /// Stops clearing between two items and waits for the commands under way, though not for long: a
  /// disk that doesn't answer must not hold the end up. The first step of the end of the process,
  /// while the event loop still runs.
  QCoro::Task<void> finishCommands();

  /// The last step: lets nothing begin any more that could be cut off, and waits, within bounds,
  /// until what has begun and every accepted command is over. Blocks; any thread.
  void stopClearing();

 signals:
  void reportsChanged();
  void journalChanged();
  void freeSpaceChanged();
  void systemStateChanged();  ///< Extension, login item or notifications.

 private:
  class CommandScope;

  std::shared_ptr<Engine> makeEngine();

  /// What was read and the number of that reading.
  struct NumberedSnapshot {
    std::shared_ptr<const Snapshot> snapshot;
    std::uint64_t number = 0;
  };

  /// What a cycle has read, after the reading of that number, of folders in which nothing was to
  /// go.
  struct SinceReading {
    std::uint64_t number = 0;
    RecentReports untouched;
  };

  /// What a run leaves to be known of a folder.
  struct Cleared {
    std::shared_ptr<const FolderReport> untouched;  ///< As it was read, if nothing was to go.
    std::vector<LeftItem> left;
  };

  QCoro::Task<NumberedSnapshot> readAndPublish(std::shared_ptr<const SinceReading> since = nullptr);
  QCoro::Task<void> serveRefreshes();
  QCoro::Task<void> showPresentRules(std::int64_t folderID);
  QCoro::Task<void> clearFolders();
  QCoro::Task<Cleared> clear(std::int64_t folderID, Date now);
  QCoro::Task<Cleared> passOver(Folder seen, Date now);
  template <class Work>
  QCoro::Task<Cleared> treat(std::int64_t folderID, Work work);
  bool isClockTrusted(Date now, const std::vector<FolderReport>& reports);
  void letCommandsFoldersGo();
  void showFailure(const std::string& action, const std::exception_ptr& error);
  QCoro::Task<void> refreshNotificationAuthorization();
  void publishTemporaryPaths();
  QCoro::Task<void> notifyTomorrow(Date now);
  QCoro::Task<void> notifyOnce(std::string identifier, Date now, std::string title,
                               std::string body);
  QCoro::Task<bool> postNotification(std::string identifier, std::string title, std::string body);

  /// Carries out a command's work on another thread, counted as accepted from now on, and answers
  /// what it threw, if anything.
  template <class Work>
  QCoro::Task<Caught> carryOut(Work work) {
    _runGate->acceptCommand();
    const auto counted = [gate = _runGate, work] {
      const RunGate::Command command(*gate);
      work();
    };
    try {
      co_await detached(_services.executor, counted);
    } catch (...) {
      co_return Caught{std::current_exception()};
    }
    co_return Caught{};
  }

  /// Stores a value and tells the observers if it is another one.
  template <class Value>
  void publish(Value& field, Value value, void (AppModel::*changed)()) {
    if (field == value) return;
    field = std::move(value);
    emit(this->*changed)();
  }

  Services _services;
  std::shared_ptr<const Snapshot> _snapshot;
  /// The number of the last reading that began, counted by the readings themselves.
  std::shared_ptr<std::atomic<std::uint64_t>> _lastReading =
      std::make_shared<std::atomic<std::uint64_t>>(0);
  std::uint64_t _shownReading = 0;  ///< That of the snapshot.
  /// Of the last cycle that cleared.
  std::shared_ptr<const LeftItems> _leftItems = std::make_shared<LeftItems>();

  std::shared_ptr<Occurrence> _askedReading;  ///< Done for all who asked; none if nobody has.
  bool _isServingRefreshes = false;

  bool _isFinderExtensionOff = false;
  bool _isLoginItemEnabled = false;
  bool _loginItemNeedsApproval = false;
  bool _isNotificationAuthorized = false;
  bool _isRunning = false;    ///< A background cycle is under way.
  bool _isNotifying = false;  ///< The day's notifications are being delivered.

  std::shared_ptr<RunGate> _runGate;
  std::shared_ptr<Engine> _engine;  ///< Shared with the tasks under way.
  std::shared_ptr<PendingEdits> _edits = std::make_shared<PendingEdits>();
  std::set<std::int64_t> _putBack;  ///< Journal entries that are back, or on their way.
  int _commandsUnderWay = 0;
  std::shared_ptr<Occurrence> _commandsEnded;  ///< What the end of the process waits for.
  std::vector<std::int64_t> _toLetGo;          ///< Held back by commands that are over.
  ClockCheck _clockCheck;
  QTimer _hourlyTimer;
};

}  // namespace tidemar
