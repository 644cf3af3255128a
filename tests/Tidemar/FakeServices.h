#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "OrderedExecutor.h"
#include "Tidemar/Model/AppModel.h"
#include "support/FakeFileManager.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryTree.h"

namespace tidemar::testing {

/// Writes down what the user would be told.
struct RecordingAlerts : Alerts {
  void run(const Alert& alert) override {
    told.push_back(alert.message + "\n" + alert.information);
    if (whileShown) whileShown();
  }
  std::vector<std::string> told;
  std::function<void()> whileShown;
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
  explicit ModelWorld(Executor* executor = nullptr);

  /// Draws a folder with these items, makes it known and Temporary, and answers its row id.
  std::int64_t makeTemporary(const std::string& path, const std::vector<std::string>& items = {});

  /// The date of an item that is so many days old at the start, as the disk is drawn.
  static std::string aged(double days);

  void runCycle() { QCoro::waitFor(model->runBackgroundCycle()); }

  /// The journal's names, oldest first, joined by a blank.
  std::string removedNames();

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

}  // namespace tidemar::testing
