#pragma once

#include <condition_variable>
#include <mutex>

namespace tidemar {

/// Lets the end of the process wait for what must not be cut off: a run between its first item and
/// the writing of its end, and a command between its change of the disk and the writing of it.
/// Thread-safe.
class RunGate {
 public:
  /// Held by who must not be cut off. One that finds the gate closed once it holds a passage begins
  /// nothing: the end may not wait for it.
  class Passage {
   public:
    explicit Passage(RunGate& gate);
    ~Passage();
    Passage(const Passage&) = delete;
    Passage& operator=(const Passage&) = delete;

   private:
    RunGate& _gate;
  };

  /// Whether nothing more is to begin.
  bool isClosed() const;

  /// From now on no run touches another item and no command begins; what is in hand is finished.
  void close();

  /// Waits until every passage has ended.
  void waitUntilLeft();

 private:
  mutable std::mutex _mutex;
  std::condition_variable _allLeft;
  int _passages = 0;
  bool _isClosed = false;
};

}  // namespace tidemar
