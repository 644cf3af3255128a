#include "TidemarKit/Store/DatabaseDate.h"
#include "TidemarKit/Store/DatabaseError.h"
#include "TidemarKit/Store/DatabaseMigrator.h"
#include "TidemarKit/Store/DatabaseQueue.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

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

TEST(DatabaseQueue, aStatementCanBeUsedInsideItselfAndKeepsNothingForItsNextUse) {
  DatabaseQueue queue;
  queue.write([](Database& database) {
    database.execute("CREATE TABLE t (x NOT NULL, y); INSERT INTO t VALUES (1, 1), (2, 2)");
    std::vector<std::int64_t> pairs;
    Statement outer = database.statement("SELECT x FROM t ORDER BY x");
    while (outer.step()) {
      Statement inner = database.statement("SELECT x FROM t ORDER BY x");
      while (inner.step())
        pairs.push_back(outer.row().integer(0) * 10 + inner.row().integer(0));
    }
    EXPECT_EQ(pairs, (std::vector<std::int64_t>{11, 12, 21, 22}));

    const std::string insert = "INSERT INTO t VALUES (?, ?)";
    const auto refuse = [&] {
      database.statement(insert).bind(std::nullopt, std::int64_t{4}).run();
    };
    EXPECT_THROW(refuse(), DatabaseError);
    database.statement(insert).bind(std::int64_t{3}).run();
  });
  EXPECT_THROW(queue.write([](Database& database) {
    database.execute("INSERT INTO t VALUES (4, 4)");
    throw std::runtime_error("changed its mind");
  }),
               std::runtime_error);
  queue.read([](Database& database) {
    Statement statement = database.statement("SELECT count(*), sum(y) FROM t");
    statement.step();
    EXPECT_EQ(statement.row().integer(0), 3) << "all or nothing";
    EXPECT_EQ(statement.row().integer(1), 3) << "nothing of an earlier use";
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
      Statement all =
          database.statement("SELECT group_concat(identifier, ' ') FROM grdb_migrations");
      all.step();
      return all.row().text(0);
    });
  };

  EXPECT_THROW(migrator.migrate(queue), std::runtime_error);
  EXPECT_EQ(identifiers(), "first");
  fails = false;
  migrator.migrate(queue);
  EXPECT_EQ(identifiers(), "first second third");
  migrator.migrate(queue);
  EXPECT_EQ(identifiers(), "first second third");
}

TEST(DatabaseDate, writesTheLastWholeMillisecondInUTC) {
  const std::pair<double, const char*> rows[] = {
      {0, "1970-01-01 00:00:00.000"},
      {1763763095.25, "2025-11-21 22:11:35.250"},
      // Whole milliseconds, which multiplying would miss or reach.
      {1.001, "1970-01-01 00:00:01.001"},
      {std::nextafter(99195113.658, 0), "1973-02-22 02:11:53.657"},
      // What is finer never makes it later.
      {1763763095.9999, "2025-11-21 22:11:35.999"},
      {std::nextafter(1763763096.0, 0), "2025-11-21 22:11:35.999"},
      {-0.001, "1969-12-31 23:59:59.999"},
      {-0.0001, "1969-12-31 23:59:59.999"},
      {-86400, "1969-12-31 00:00:00.000"},
      {1709164800, "2024-02-29 00:00:00.000"},
      {4107542400, "2100-03-01 00:00:00.000"},
      {-62167219200, "0000-01-01 00:00:00.000"},
      {253402300799.9999, "9999-12-31 23:59:59.999"},
  };
  for (const auto& [date, text] : rows)
    EXPECT_EQ(DatabaseDate::text(Date{date}), text);
}

TEST(DatabaseDate, refusesDatesItCannotWriteAndEveryOtherText) {
  for (const double date :
       {253402300800.0, -62167219200.001, 1e300, std::numeric_limits<double>::infinity(),
        -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_THROW(DatabaseDate::text(Date{date}), DatabaseError) << date;
  }
  for (const char* text :
       {"", "2025-11-21", "2025-11-21 22:11:35", "2025-11-21T22:11:35.250",
        "2025-11-21 22:11:35.25", "2025-11-21 22:11:35.2500", "2025-11-21 22:11:35,250",
        " 2025-11-21 22:11:35.25", "2025-11-21 22:11:35.250Z", "2025-11-2x 22:11:35.250",
        "+025-11-21 22:11:35.250", "2025-13-01 00:00:00.000", "2025-00-01 00:00:00.000",
        "2025-02-29 00:00:00.000", "2025-04-31 00:00:00.000", "2025-04-00 00:00:00.000",
        "2025-11-21 24:00:00.000", "2025-11-21 22:60:00.000", "2025-11-21 22:11:60.000"}) {
    EXPECT_THROW(DatabaseDate::date(text), DatabaseError) << text;
  }
}

TEST(DatabaseDate, everyMillisecondReadIsWrittenAsItStood) {
  for (const char* second : {"0000-01-01 00:00:00", "1900-02-28 23:59:59", "1969-12-31 23:59:59",
                             "1970-01-01 00:00:00", "2025-11-21 22:11:35", "9999-12-31 23:59:59"}) {
    for (int millisecond = 0; millisecond < 1000; ++millisecond) {
      const std::string digits = std::to_string(1000 + millisecond).substr(1);
      const std::string text = std::string(second) + "." + digits;
      ASSERT_EQ(DatabaseDate::text(DatabaseDate::date(text)), text);
    }
  }
  EXPECT_EQ(DatabaseDate::date("2025-11-21 22:11:35.250").secondsSince1970, 1763763095.25);
}

}  // namespace
}  // namespace tidemar::testing
