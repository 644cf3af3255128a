#include "TidemarKit/Store/DatabaseQueue.h"

#include <stdexcept>

namespace tidemar {

DatabaseQueue::Turn::Turn(DatabaseQueue& queue) : _queue(queue) {
  if (_queue._servedThread == std::this_thread::get_id()) {
    throw std::logic_error("The database was accessed from inside another access to it.");
  }
  _queue._lock.wait(_queue._lock.takeTicket());
  _queue._servedThread = std::this_thread::get_id();
}

DatabaseQueue::Turn::~Turn() {
  _queue._servedThread = std::thread::id();
  _queue._lock.release();
}

}  // namespace tidemar
