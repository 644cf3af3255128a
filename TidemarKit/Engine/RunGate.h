#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <set>

namespace tidemar {

/// Says what may still be cleared, and lets the end of the process wait for what must not be cut
/// off: a run between its first item and the writing of its end, a command between its change of
/// the disk and the writing of it, and every command that was accepted. Thread-safe.
class RunGate {
 public:
  /// Held by who must not be cut off. A command that finds the gate shut once it holds a passage
  /// begins nothing: the end may not wait for it.
  class Passage {
   public:
    explicit Passage(RunGate& gate);
    ~Passage();
    Passage(const Passage&) = delete;
    Passage& operator=(const Passage&) = delete;

   private:
    RunGate& _gate;
  };

  /// A command that was accepted, from its beginning on another thread to its end there.
  class Command {
   public:
    explicit Command(RunGate& gate) : _gate(gate) {}
    ~Command();
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

   private:
    RunGate& _gate;
  };

  /// Counts a command that is about to be handed to another thread, where a `Command` ends it.
  void acceptCommand();

  /// Whether a run of this folder may not touch another item.
  bool isClosed(std::int64_t folderID) const;

  /// From now on no run of this folder touches another item. Each call wants one of `letGo`.
  void holdBack(std::int64_t folderID);
  void letGo(std::int64_t folderID);

  /// From now on no run touches another item; the one in hand is finished.
  void close();

  /// Closes, and from now on no command begins to change a disk either.
  void shut();
  bool isShut() const;

  /// Waits until every passage has ended, or every accepted command. Answers false where that took
  /// longer than `patience`.
  bool waitUntilLeft(std::chrono::milliseconds patience);
  bool waitForCommands(std::chrono::milliseconds patience);

 private:
  bool waitForNone(const int& count, std::chrono::milliseconds patience);

  mutable std::mutex _mutex;
  std::condition_variable _someLeft;
  std::multiset<std::int64_t> _heldBack;
  int _passages = 0;
  int _commands = 0;
  bool _isClosed = false;
  bool _isShut = false;
};

}  // namespace tidemar
