#include "TidemarKit/Store/TicketLock.h"

namespace tidemar {

TicketLock::Ticket TicketLock::takeTicket() {
  const std::lock_guard guard(_mutex);
  return _next++;
}

void TicketLock::wait(Ticket ticket) {
  std::unique_lock guard(_mutex);
  _turnChanged.wait(guard, [&] { return _served == ticket; });
}

void TicketLock::release() {
  {
    const std::lock_guard guard(_mutex);
    ++_served;
  }
  _turnChanged.notify_all();
}

}  // namespace tidemar
