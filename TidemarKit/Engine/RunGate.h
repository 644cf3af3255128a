#pragma once

#include <condition_variable>
#include <mutex>

namespace tidemar {

/// Lets the end of the process wait for what must not be cut off: a run between its first item and
/// the writing of its end. Thread-safe.
class RunGate {
 public:
  /// Held by a run while it clears.
  class Passage {
   public:
    explicit Passage(RunGate& gate);
    ~Passage();
    Passage(const Passage&) = delete;
    Passage& operator=(const Passage&) = delete;

   private:
    RunGate& _gate;
  };

  /// Whether runs are to end before their next item.
  bool isClosed() const;

  /// From now on no run touches another item; the item in hand is finished.
  void close();

  /// Waits until every run that was clearing has written its end.
  void waitUntilLeft();

 private:
  mutable std::mutex _mutex;
  std::condition_variable _allLeft;
  int _passages = 0;
  bool _isClosed = false;
};

}  // namespace tidemar
