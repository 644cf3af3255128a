#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace tidemar {

/// Carries out what may take long, off the main thread. Used on the main thread; destroying what it
/// shared is allowed on any. Outlives whatever was given to it.
class Executor {
 public:
  virtual ~Executor() = default;

  /// Begins the work, without waiting for other work to end, and calls `finished` on the main
  /// thread, from its event loop, once it is over and destroyed. The work gets nothing that belongs
  /// to the main thread and doesn't throw; `finished` may be empty.
  virtual void start(std::function<void()> work, std::function<void()> finished) = 0;
};

/// A value that many share and whose destruction may take long: it is left to the executor, whoever
/// lets go of it last.
template <class Value>
std::shared_ptr<const Value> sharedDetached(Executor& executor, Value value) {
  return std::shared_ptr<const Value>(new Value(std::move(value)), [&executor](const Value* last) {
    executor.start([last] { delete last; }, nullptr);
  });
}

}  // namespace tidemar
