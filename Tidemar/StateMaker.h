#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "Tidemar/Model/ApplicationLog.h"
#include "Tidemar/Model/Detached.h"
#include "Tidemar/Model/Failures.h"

namespace tidemar {

/// Makes the states of one screen off the main thread, one after the other, and compares each with
/// the one before it there. While one is made, no more than the latest request waits. Main thread;
/// may be destroyed at any time.
template <class State>
class StateMaker {
 public:
  using Make = std::function<State()>;

  /// `show` is called with each state on the main thread, from its event loop; with null where it
  /// equals the one before. The executor outlives all states.
  StateMaker(Executor& executor, std::function<void(std::shared_ptr<const State>)> show)
      : _work(std::make_shared<Work>(executor, std::move(show))) {}
  StateMaker(const StateMaker&) = delete;
  StateMaker& operator=(const StateMaker&) = delete;
  ~StateMaker() { _work->show = nullptr; }

  /// Has a state made by this closure, which is called on another thread.
  void ask(Make make) {
    _work->next = std::move(make);
    if (!_work->isUnderWay) serve(_work);
  }

 private:
  struct Work {
    Executor& executor;
    std::function<void(std::shared_ptr<const State>)> show;
    Make next{};
    std::shared_ptr<const State> shown{};
    bool isUnderWay = false;
  };

  static QCoro::Task<void> serve(std::shared_ptr<Work> work) {
    work->isUnderWay = true;
    while (work->next && work->show) {
      const auto make = [&executor = work->executor, make = std::exchange(work->next, nullptr),
                         shown = work->shown]() -> std::shared_ptr<const State> {
        State state = make();
        if (shown && *shown == state) return nullptr;
        return sharedDetached(executor, std::move(state));
      };
      try {
        const std::shared_ptr<const State> made = co_await detached(work->executor, make);
        if (made) work->shown = made;
        // The call may destroy the screen, and its closure with it.
        if (const auto show = work->show) show(made);
      } catch (...) {
        applicationLog().log(LogLevel::error, "Couldn't make a screen: %{public}s",
                             textForLog(std::current_exception()));
      }
    }
    work->isUnderWay = false;
  }

  std::shared_ptr<Work> _work;
};

}  // namespace tidemar
