#pragma once

#include <QObject>
#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

#include "Tidemar/Model/Executor.h"

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

}  // namespace tidemar::testing
