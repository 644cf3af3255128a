#include <QCoreApplication>
#include <QThread>
#include <latch>

#include "Tidemar/Model/WaitingPool.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

using namespace std::chrono_literals;

/// A value whose copies can be counted.
using Counted = std::shared_ptr<int>;

std::ptrdiff_t threadCount() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

TEST(WaitingPool, EveryEndComesOnceToTheMainThreadAndThreadsComeAndGo) {
  // A sanitizer may begin a thread of its own along with the first one.
  std::thread([] {}).join();
  const std::ptrdiff_t threadsBefore = threadCount();
  constexpr int rounds = 20;
  constexpr int width = 100;
  // So short that threads end while work comes.
  WaitingPool pool(8, 0ms);
  std::vector<int> results(rounds * width);
  std::multiset<int> ends;
  const Counted counted = std::make_shared<int>();
  for (int round = 0; round < rounds; ++round) {
    for (int i = round * width; i < (round + 1) * width; ++i) {
      auto result = std::make_shared<int>();
      pool.start(
          [&pool, &counted, result, i] {
            *result = i + 1;
            // Work gives back what it shared.
            const auto shared = sharedDetached(pool, Counted(counted));
          },
          [&, result, i] {
            EXPECT_EQ(QThread::currentThread(), QCoreApplication::instance()->thread());
            results[static_cast<std::size_t>(i)] = *result;
            ends.insert(i);
          });
      if (i % 7 == 0) QCoreApplication::processEvents();
    }
    while (ends.size() < static_cast<std::size_t>((round + 1) * width))
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
  for (int i = 0; i < rounds * width; ++i) {
    EXPECT_EQ(ends.count(i), 1U);
    EXPECT_EQ(results[static_cast<std::size_t>(i)], i + 1);
  }
  // Each ends of itself, while the pool is still there.
  while (threadCount() > threadsBefore)
    std::this_thread::yield();
  EXPECT_EQ(counted.use_count(), 1);
}

TEST(WaitingPool, WorkThatWaitsHoldsNoOtherUpBelowTheBound) {
  constexpr int bound = 8;
  WaitingPool pool(bound, 1h);
  for (int round = 0; round < 20; ++round) {
    // Passed only once as many threads are there at the same time.
    auto together = std::make_shared<std::latch>(bound);
    for (int i = 0; i < bound; ++i)
      pool.start([together] { together->arrive_and_wait(); }, nullptr);
    together->wait();
  }
}

TEST(WaitingPool, ItsEndWaitsForAllWorkAndDropsWhatWasNotTold) {
  for (int round = 0; round < 50; ++round) {
    SCOPED_TRACE(round);
    constexpr int count = 30;
    std::atomic<int> done = 0;
    const Counted counted = std::make_shared<int>();
    int told = 0;
    {
      WaitingPool pool(4, 1h);
      for (int i = 0; i < count; ++i) {
        // The end holds what the work made, which is given to the pool to be destroyed.
        auto made = std::make_shared<std::shared_ptr<const Counted>>();
        pool.start(
            [&, made] {
              *made = sharedDetached(pool, Counted(counted));
              ++done;
            },
            [&told, made] { ++told; });
      }
      // Some ends are on their way through the event loop.
      while (round % 2 == 1 && told < 3)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    EXPECT_EQ(done, count);
    EXPECT_EQ(counted.use_count(), 1);
    const int toldBefore = told;
    QCoreApplication::processEvents();
    EXPECT_EQ(told, toldBefore);
  }
}

}  // namespace
}  // namespace tidemar::testing
