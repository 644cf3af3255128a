#pragma once

#include <QSocketNotifier>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>

#include "Tidemar/Model/Executor.h"

namespace tidemar {

/// The executor of the program: threads for work that waits, for disks and for the database, rather
/// than computes. So there are as many as work asks for, up to a bound that only mounts that don't
/// answer reach; work beyond it waits for its turn. A thread without work ends after a while: an
/// idle program has none of them and wakes for nothing.
class WaitingPool final : public Executor {
 public:
  /// Belongs to the thread that makes it, which needs an event loop for the ends of work.
  explicit WaitingPool(std::size_t mostThreads = 32,
                       std::chrono::milliseconds idleTime = std::chrono::seconds(5));

  /// Waits for all work. What wasn't told as finished yet is never told.
  ~WaitingPool() override;

  WaitingPool(const WaitingPool&) = delete;
  WaitingPool& operator=(const WaitingPool&) = delete;

  void start(std::function<void()> work, std::function<void()> finished) override;

 private:
  struct Shared;

  void addThread();
  static void serve(const std::shared_ptr<Shared>& shared);
  void tellFinished();

  std::shared_ptr<Shared> _shared;  ///< With the threads.
  QSocketNotifier _notifier;
};

}  // namespace tidemar
