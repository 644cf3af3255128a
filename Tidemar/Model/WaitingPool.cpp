#include "Tidemar/Model/WaitingPool.h"

#include <QCoreApplication>
#include <cerrno>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <sys/eventfd.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "Platform/PlatformError.h"

namespace tidemar {
namespace {

struct Job {
  std::function<void()> work;
  std::function<void()> finished;
};

FileDescriptor makeEvent() {
  FileDescriptor event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (event.get() < 0) throw PlatformError("make an event", FileURL(), errno);
  return event;
}

}  // namespace

struct WaitingPool::Shared {
  std::size_t mostThreads = 0;
  std::chrono::milliseconds idleTime{0};
  FileDescriptor finishedEvent = makeEvent();

  std::mutex mutex;
  std::condition_variable jobCame;
  std::condition_variable threadEnded;
  std::deque<Job> jobs;
  std::vector<std::function<void()>> finished;  ///< Not told yet.
  std::size_t threads = 0;
  std::size_t idleThreads = 0;
  bool isEnding = false;
};

WaitingPool::WaitingPool(std::size_t mostThreads, std::chrono::milliseconds idleTime)
    : _shared(std::make_shared<Shared>()),
      _notifier(_shared->finishedEvent.get(), QSocketNotifier::Read) {
  _shared->mostThreads = mostThreads;
  _shared->idleTime = idleTime;
  QObject::connect(&_notifier, &QSocketNotifier::activated, &_notifier, [this] { tellFinished(); });
}

WaitingPool::~WaitingPool() {
  QCoreApplication::removePostedEvents(&_notifier);
  std::unique_lock lock(_shared->mutex);
  _shared->isEnding = true;
  _shared->jobCame.notify_all();
  std::vector<std::function<void()>> dropped;
  do {
    // What an end holds may be given to the pool to be destroyed, which is work again.
    lock.unlock();
    dropped.clear();
    lock.lock();
    _shared->threadEnded.wait(lock, [this] { return _shared->threads == 0; });
    dropped.swap(_shared->finished);
  } while (!dropped.empty());
}

void WaitingPool::start(std::function<void()> work, std::function<void()> finished) {
  const std::lock_guard lock(_shared->mutex);
  _shared->jobs.push_back({std::move(work), std::move(finished)});
  if (_shared->jobs.size() <= _shared->idleThreads) {
    _shared->jobCame.notify_one();
  } else if (_shared->threads < _shared->mostThreads) {
    addThread();
  }
}

void WaitingPool::addThread() {
  try {
    std::thread([shared = _shared] { serve(shared); }).detach();
    ++_shared->threads;
  } catch (const std::system_error&) {
    // The threads that there are do it in their time; without any the program can't go on.
    if (_shared->threads == 0) throw;
  }
}

void WaitingPool::serve(const std::shared_ptr<Shared>& shared) {
  std::unique_lock lock(shared->mutex);
  for (;;) {
    while (!shared->jobs.empty()) {
      Job job = std::move(shared->jobs.front());
      shared->jobs.pop_front();
      lock.unlock();
      job.work();
      job.work = nullptr;
      lock.lock();
      if (!job.finished) continue;
      shared->finished.push_back(std::move(job.finished));
      eventfd_write(shared->finishedEvent.get(), 1);
    }
    if (shared->isEnding) break;
    ++shared->idleThreads;
    const bool goesOn = shared->jobCame.wait_for(
        lock, shared->idleTime, [&] { return !shared->jobs.empty() || shared->isEnding; });
    --shared->idleThreads;
    if (!goesOn) break;
  }
  --shared->threads;
  shared->threadEnded.notify_all();
}

void WaitingPool::tellFinished() {
  eventfd_t count = 0;
  eventfd_read(_shared->finishedEvent.get(), &count);
  std::vector<std::function<void()>> finished;
  {
    const std::lock_guard lock(_shared->mutex);
    finished.swap(_shared->finished);
  }
  // Each in an event of its own: one may wait for the user in an event loop of its own meanwhile.
  for (std::function<void()>& end : finished)
    QMetaObject::invokeMethod(&_notifier, std::move(end), Qt::QueuedConnection);
}

}  // namespace tidemar
