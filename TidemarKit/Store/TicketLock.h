#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace tidemar {

/// A lock that is granted in order of arrival, which `std::mutex` doesn't promise. Arriving and
/// waiting are two steps: the order is settled by `takeTicket`, whichever thread then waits first.
/// Every ticket taken has to be waited for and then released, or those behind it wait for ever.
class TicketLock {
 public:
  using Ticket = std::uint64_t;

  Ticket takeTicket();

  /// Blocks until every earlier ticket has been released.
  void wait(Ticket ticket);

  /// Ends the turn of the ticket that is being served.
  void release();

 private:
  std::mutex _mutex;
  std::condition_variable _turnChanged;
  Ticket _next = 0;
  Ticket _served = 0;
};

}  // namespace tidemar
