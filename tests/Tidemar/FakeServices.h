#pragma once

#include <QObject>

#include "Tidemar/Model/AppModel.h"
#include "Tidemar/Model/Executor.h"
#include "support/FakeFileManager.h"
#include "support/RecordingAlerts.h"
#include "support/Testing.h"

namespace tidemar::testing {

/// Carries detached work out on the main thread: by itself in the order in which it comes, from the
/// event loop; or step by step in any order that a test asks for. A piece of work takes two steps,
/// the work and the delivery of its end.
class OrderedExecutor final : public Executor {
 public:
  void start(std::function<void()> work, std::function<void()> finished) override {
    // Nobody waits for the destruction of what was shared.
    if (!finished) return work();
    _steps.push_back([this, work = std::move(work), finished = std::move(finished)]() mutable {
      work();
      work = nullptr;
      _steps.push_back(std::move(finished));
      if (!_isByHand) takeLater();
    });
    if (!_isByHand) takeLater();
  }

  /// From now on nothing happens but by `take`.
  void becomeManual() { _isByHand = true; }

  std::size_t stepCount() const noexcept { return _steps.size(); }

  /// Takes one of the steps that are possible now, the oldest first.
  void take(std::size_t index) {
    const auto chosen = _steps.begin() + static_cast<std::ptrdiff_t>(index);
    auto step = std::move(*chosen);
    _steps.erase(chosen);
    step();
  }

 private:
  void takeLater() {
    QMetaObject::invokeMethod(
        &_context, [this] { take(0); }, Qt::QueuedConnection);
  }

  QObject _context;
  std::vector<std::function<void()>> _steps;
  bool _isByHand = false;
};

struct FakeNotificationCenter : NotificationCenter {
  QCoro::Task<bool> isAuthorized() override { co_return authorized; }
  QCoro::Task<bool> requestAuthorization() override {
    ++requests;
    co_return authorized;
  }
  QCoro::Task<void> add(std::string identifier, std::string title, std::string body) override {
    ++attempts;
    if (refuses) throw std::runtime_error("refused");
    delivered.push_back(identifier + "|" + title + "|" + body);
    co_return;
  }
  bool authorized = false;
  bool refuses = false;
  int requests = 0;
  int attempts = 0;
  std::vector<std::string> delivered;
};

struct FakeLoginItem : LoginItem {
  Status status() const override { return now; }
  void registerItem() override {
    if (fails) throw std::runtime_error("no such thing");
    now = becomes;
  }
  void unregisterItem() override { now = Status::off; }
  Status now = Status::off;
  Status becomes = Status::enabled;
  bool fails = false;
};

struct FakeFinderExtension : FinderExtension {
  bool isEnabled() const override { return enabled; }
  bool enabled = false;
};

/// A model over a disk in memory and services that are set by hand, with its database and defaults
/// in a directory of its own.
class ModelWorld {
 public:
  static constexpr double start = 1'800'000'000;

  /// Detached work is done by `executor`, which outlives the model, or else by one on the main
  /// thread, which the disk in memory is made for.
  explicit ModelWorld(Executor* executor = nullptr)
      : model(std::make_unique<AppModel>(
            Services{.executor = executor == nullptr ? ordered : *executor,
                     .fileManager = disk,
                     .notifications = notifications,
                     .loginItem = loginItem,
                     .finderExtension = finderExtension,
                     .alerts = alerts,
                     .standardDefaults = standardDefaults,
                     .sharedDefaults = sharedDefaults,
                     .currentDate = [this] { return Date{now}; },
                     .secondsSinceBoot = [this] { return now - clockStep; },
                     .currentCalendar = [this] { return calendar; }})) {}

  /// Draws a folder with these items, makes it known and Temporary, and answers its row id.
  std::int64_t makeTemporary(const std::string& path, const std::vector<std::string>& items = {}) {
    std::string drawing = path + "/\n";
    for (const std::string& item : items)
      drawing += "  " + item + "\n";
    disk.draw(drawing);
    const Folder folder = QCoro::waitFor(model->addFolder(FileURL(path))).value();
    QCoro::waitFor(model->setTemporary(folder, true));
    return *folder.id;
  }

  /// The date of an item that is so many days old at the start, as the disk is drawn.
  static std::string aged(double days) {
    return " @" + std::to_string(static_cast<std::int64_t>(start - days * secondsPerDay));
  }

  void runCycle() { QCoro::waitFor(model->runBackgroundCycle()); }

  /// The journal's names, oldest first, joined by a blank.
  std::string removedNames() {
    std::vector<JournalEntry> entries = model->journal();
    std::ranges::sort(entries, {}, &JournalEntry::id);
    std::string names;
    for (const JournalEntry& entry : entries)
      names += (names.empty() ? "" : " ") + entry.name;
    return names;
  }

  TemporaryDirectory directory;
  ScopedEnvironment dataHome{"XDG_DATA_HOME", directory.path("data")};
  OrderedExecutor ordered;
  FakeFileManager disk;
  RecordingAlerts alerts;
  FakeNotificationCenter notifications;
  FakeLoginItem loginItem;
  FakeFinderExtension finderExtension;
  UserDefaults standardDefaults{directory.url("standard.json")};
  UserDefaults sharedDefaults{directory.url("shared.json")};
  Calendar calendar{"UTC"};
  std::atomic<double> now = start;
  double clockStep = 0;  ///< By how many seconds the clock was set forward so far.
  std::unique_ptr<AppModel> model;
};

/// For suites of tests that each begin with such a world.
class ModelTest : public ::testing::Test, public ModelWorld {};

using QCoro::waitFor;

}  // namespace tidemar::testing
