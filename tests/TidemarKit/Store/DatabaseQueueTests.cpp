#include <cstdint>
#include <stdexcept>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "TidemarKit/Store/DatabaseError.h"
#include "TidemarKit/Store/DatabaseMigrator.h"
#include "TidemarKit/Store/DatabaseQueue.h"

namespace tidemar {
namespace {

std::int64_t count(Database& database, const std::string& table) {
  Statement statement = database.statement("SELECT count(*) FROM " + table);
  statement.step();
  return statement.row().integer(0);
}

TEST(TicketLock, isGrantedInTheOrderOfTheTicketsAndNotOfTheWaiting) {
  TicketLock lock;
  std::vector<TicketLock::Ticket> tickets;
  for (int i = 0; i < 8; ++i)
    tickets.push_back(lock.takeTicket());

  std::vector<TicketLock::Ticket> served;
  {
    std::vector<std::jthread> threads;
    for (auto ticket = tickets.rbegin(); ticket != tickets.rend(); ++ticket) {
      threads.emplace_back([&, ticket = *ticket] {
        lock.wait(ticket);
        served.push_back(ticket);
        lock.release();
      });
    }
  }
  EXPECT_EQ(served, tickets);
}

TEST(DatabaseQueue, anAccessFromInsideAnotherFailsAndLeavesTheQueueUsable) {
  DatabaseQueue queue;
  const auto nothing = [](Database&) {};
  EXPECT_THROW(queue.read([&](Database&) { queue.read(nothing); }), std::logic_error);
  EXPECT_THROW(queue.write([&](Database&) { queue.read(nothing); }), std::logic_error);

  DatabaseQueue other;
  EXPECT_NO_THROW(queue.write([&](Database&) { other.write(nothing); }));
  std::jthread([&] { EXPECT_NO_THROW(queue.write(nothing)); }).join();
}

TEST(DatabaseQueue, anyExceptionRollsTheWholeAccessBack) {
  DatabaseQueue queue;
  queue.write([](Database& database) { database.execute("CREATE TABLE t (x UNIQUE)"); });
  EXPECT_THROW(queue.write([](Database& database) {
    database.execute("INSERT INTO t VALUES (1)");
    throw std::runtime_error("changed its mind");
  }),
               std::runtime_error);
  EXPECT_THROW(queue.write([](Database& database) {
    database.execute("INSERT INTO t VALUES (1)");
    database.execute("INSERT INTO t VALUES (1)");
  }),
               DatabaseError);
  EXPECT_EQ(queue.read([](Database& database) { return count(database, "t"); }), 0);
}

TEST(DatabaseQueue, aStatementCanBeUsedInsideALoopOverItself) {
  DatabaseQueue queue;
  const auto pairs = queue.write([](Database& database) {
    database.execute("CREATE TABLE t (x); INSERT INTO t VALUES (1), (2), (3)");
    std::vector<std::int64_t> seen;
    Statement outer = database.statement("SELECT x FROM t ORDER BY x");
    while (outer.step()) {
      Statement inner = database.statement("SELECT x FROM t ORDER BY x");
      while (inner.step())
        seen.push_back(outer.row().integer(0) * 10 + inner.row().integer(0));
    }
    return seen;
  });
  EXPECT_EQ(pairs, (std::vector<std::int64_t>{11, 12, 13, 21, 22, 23, 31, 32, 33}));
}

TEST(DatabaseQueue, aStatementThatFailedKeepsNothingForItsNextUse) {
  DatabaseQueue queue;
  queue.write([](Database& database) {
    database.execute("CREATE TABLE t (x NOT NULL, y)");
    const std::string insert = "INSERT INTO t VALUES (?, ?)";
    EXPECT_THROW(database.statement(insert).bind(std::nullopt, std::string("old")).run(),
                 DatabaseError);
    database.statement(insert).bind(std::int64_t{1}).run();
    EXPECT_EQ(count(database, "t WHERE x = 1 AND y IS NULL"), 1);
  });
}

TEST(DatabaseMigrator, appliesEachMigrationOnceAndRollsAFailedOneBack) {
  DatabaseQueue queue;
  bool fails = true;
  DatabaseMigrator migrator;
  migrator.registerMigration("first",
                             [](Database& database) { database.execute("CREATE TABLE a (x)"); });
  migrator.registerMigration("second", [&](Database& database) {
    database.execute("CREATE TABLE b (x)");
    if (fails) throw std::runtime_error("no");
  });
  migrator.registerMigration(
      "third", [](Database& database) { database.execute("ALTER TABLE b RENAME TO c"); });
  const auto identifiers = [&] {
    return queue.read([](Database& database) {
      std::string all;
      Statement statement =
          database.statement("SELECT identifier FROM grdb_migrations ORDER BY rowid");
      while (statement.step())
        all += statement.row().text(0) + " ";
      return all;
    });
  };

  EXPECT_THROW(migrator.migrate(queue), std::runtime_error);
  EXPECT_EQ(identifiers(), "first ");
  fails = false;
  migrator.migrate(queue);
  EXPECT_EQ(identifiers(), "first second third ");
  migrator.migrate(queue);
  EXPECT_EQ(identifiers(), "first second third ");
}

}  // namespace
}  // namespace tidemar
