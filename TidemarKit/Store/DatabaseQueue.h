#pragma once

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>

#include "TidemarKit/Store/Database.h"
#include "TidemarKit/Store/TicketLock.h"
#include "TidemarKit/Store/Transaction.h"

namespace tidemar {

/// One connection that serves one access at a time, in order of arrival. Any thread may call it and
/// is blocked until its access is done. Each access is one transaction: what the callable throws
/// rolls it back and reaches the caller. An access from inside another one of the same queue would
/// wait for itself and throws `std::logic_error` instead.
class DatabaseQueue {
 public:
  /// On a fresh database in memory.
  DatabaseQueue() = default;

  /// On a file. Throws `DatabaseError`.
  DatabaseQueue(const std::string& path, std::chrono::milliseconds patience)
      : _database(path, patience) {}

  /// Answers what `access(database)` answers, which must not refer to the database any more.
  template <class Access>
  auto read(Access&& access) {
    return perform(Transaction::Kind::reading, std::forward<Access>(access));
  }

  /// Throws for a file that isn't in its place any more: before the access, and behind it for one
  /// that was moved away meanwhile.
  template <class Access>
  auto write(Access&& access) {
    return perform(Transaction::Kind::writing, std::forward<Access>(access));
  }

  /// Carries out what a write would do and takes it back.
  template <class Access>
  void attempt(Access&& access) {
    const Turn turn(*this);
    _database.requireInPlace();
    Transaction transaction(_database, Transaction::Kind::trial);
    _database.requireWritableFile();
    std::forward<Access>(access)(_database);
    transaction.rollBack();
  }

  /// The file; empty for a database in memory. Any thread, at any time.
  std::string file() const { return _database.file(); }

 private:
  /// The scope in which the calling thread has the connection for itself.
  class Turn {
   public:
    explicit Turn(DatabaseQueue& queue);
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn();

   private:
    DatabaseQueue& _queue;
  };

  template <class Access>
  auto perform(Transaction::Kind kind, Access&& access) {
    const Turn turn(*this);
    const bool writes = kind == Transaction::Kind::writing;
    if (writes) _database.requireInPlace();
    Transaction transaction(_database, kind);
    const auto commit = [&] {
      transaction.commit();
      if (writes) _database.requireInPlace();
    };
    if constexpr (std::is_void_v<std::invoke_result_t<Access, Database&>>) {
      std::forward<Access>(access)(_database);
      commit();
    } else {
      auto result = std::forward<Access>(access)(_database);
      commit();
      return result;
    }
  }

  Database _database;
  TicketLock _lock;
  std::atomic<std::thread::id> _servedThread;
};

}  // namespace tidemar
