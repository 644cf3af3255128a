#pragma once

#include <coroutine>
#include <utility>
#include <vector>

namespace tidemar {

/// Something that happens once and that any number of coroutines await. Main thread; it must live
/// until it has happened and nobody awaits it any more.
class Occurrence {
 public:
  Occurrence() = default;
  Occurrence(const Occurrence&) = delete;
  Occurrence& operator=(const Occurrence&) = delete;

  /// Lets those go on that await it, before it returns. Another call does nothing.
  void happen() {
    _hasHappened = true;
    for (const std::coroutine_handle<> waiting : std::exchange(_waiting, {}))
      waiting.resume();
  }

  /// Refers to the occurrence: g++ 12 copies what is awaited.
  class Awaiter {
   public:
    explicit Awaiter(Occurrence& occurrence) : _occurrence(&occurrence) {}
    bool await_ready() const noexcept { return _occurrence->_hasHappened; }
    void await_suspend(std::coroutine_handle<> waiting) const {
      _occurrence->_waiting.push_back(waiting);
    }
    void await_resume() const noexcept {}

   private:
    Occurrence* _occurrence;
  };
  Awaiter operator co_await() noexcept { return Awaiter(*this); }

 private:
  bool _hasHappened = false;
  std::vector<std::coroutine_handle<>> _waiting;
};

}  // namespace tidemar
