#include <atomic>
#include <cerrno>
#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sqlite3.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "TidemarKit/Store/LedgerWorld.h"
#include "support/FailingSystemCall.h"
#include "support/RawDatabase.h"
#include "support/TemporaryTree.h"
#include "support/TestFileSystems.h"

namespace tidemar {
namespace {

using namespace tidemar::testing;

/// What may become of the file in the middle of a run, and how it ends.
struct Trouble {
  std::string name;
  int code = 0;  ///< With which no row can be written meanwhile.
  std::function<void(LedgerWorld& world)> begin;
  std::function<void(LedgerWorld& world)> end;
};

Trouble lock(const std::string& name, const std::string& sql) {
  return {name, SQLITE_BUSY, [=](LedgerWorld& world) { world.other.emplace(world.path).run(sql); },
          [](LedgerWorld& world) { world.other.reset(); }};
}

Trouble change(const std::string& name, int code, const std::string& begin,
               const std::string& end) {
  return {name, code, [=](LedgerWorld& world) { runSQL(world.path, begin); },
          [=](LedgerWorld& world) { runSQL(world.path, end); }};
}

Trouble trigger(const std::string& name, int code, const std::string& moment,
                const std::string& action) {
  return change(
      "a trigger that " + name, code,
      "CREATE TRIGGER planted " + moment + " INSERT ON journalEntry BEGIN " + action + "; END",
      "DROP TRIGGER planted");
}

Trouble move(const std::string& name, std::function<void(LedgerWorld& world)> begin) {
  return {name, SQLITE_READONLY, std::move(begin), [](LedgerWorld& world) {
            EXPECT_EQ(rename(world.aside.c_str(), world.path.c_str()), 0);
          }};
}

const Trouble troubles[] = {
    lock("a program that reads for ever", "BEGIN; SELECT * FROM folder"),
    lock("a program that is about to write", "BEGIN IMMEDIATE"),
    lock("a program that has the file for itself", "BEGIN EXCLUSIVE"),

    move("moved away", [](LedgerWorld& world) { rename(world.path.c_str(), world.aside.c_str()); }),
    move("deleted",
         [](LedgerWorld& world) {
           EXPECT_EQ(link(world.path.c_str(), world.aside.c_str()), 0);
           unlink(world.path.c_str());
         }),
    move("replaced by a copy",
         [](LedgerWorld& world) {
           rename(world.path.c_str(), world.aside.c_str());
           writeFile(FileURL(world.path), readFile(FileURL(world.aside)));
         }),
    {"its directory moved away", SQLITE_READONLY,
     [](LedgerWorld& world) {
       rename(world.directory.c_str(), world.parent.path("aside").c_str());
     },
     [](LedgerWorld& world) {
       rename(world.parent.path("aside").c_str(), world.directory.c_str());
     }},
    {"no place for the rollback journal", SQLITE_IOERR,
     [](LedgerWorld& world) { mkdir((world.path + "-journal").c_str(), 0700); },
     [](LedgerWorld& world) { rmdir((world.path + "-journal").c_str()); }},

    trigger("refuses", SQLITE_CONSTRAINT, "BEFORE", "SELECT RAISE(ABORT, 'no')"),
    trigger("ignores the row", SQLITE_MISMATCH, "BEFORE", "SELECT RAISE(IGNORE)"),
    trigger("deletes the row", SQLITE_MISMATCH, "AFTER",
            "DELETE FROM journalEntry WHERE id = NEW.id"),
    trigger("changes a column", SQLITE_MISMATCH, "AFTER",
            "UPDATE journalEntry SET size = size + 1 WHERE id = NEW.id"),
    trigger("moves the row", SQLITE_MISMATCH, "AFTER",
            "UPDATE journalEntry SET id = id + 1000 WHERE id = NEW.id"),

    change("a column less", SQLITE_ERROR, "ALTER TABLE journalEntry DROP COLUMN undoneAt",
           "ALTER TABLE journalEntry ADD COLUMN undoneAt DATETIME"),
    change("no table", SQLITE_ERROR, "ALTER TABLE journalEntry RENAME TO other",
           "ALTER TABLE other RENAME TO journalEntry"),
    change(
        "a later schema, which wants one value more", SQLITE_CONSTRAINT,
        "ALTER TABLE journalEntry RENAME TO other;"
        "CREATE TABLE journalEntry (id INTEGER PRIMARY KEY, folderID, disposal, name, binnedPath,"
        " size, reasons, performedAt, undoneAt, colour NOT NULL)",
        "DROP TABLE journalEntry; ALTER TABLE other RENAME TO journalEntry"),
};

TEST(RemovalLedger, letsNothingGoWhoseRowCouldNotBeWrittenAndKeepsTheRowOfWhatWent) {
  for (const Trouble& trouble : troubles) {
    SCOPED_TRACE(trouble.name);
    LedgerWorld world;
    RemovalLedger& ledger = world.ledger;
    ledger.prepare(world.row("a"));
    EXPECT_EQ(ledger.record(world.row("a")).id, 1);

    trouble.begin(world);
    EXPECT_EQ(codeOf([&] { ledger.prepare(world.row("b")); }), trouble.code);
    EXPECT_TRUE(ledger.isSettled());
    trouble.end(world);
    ledger.prepare(world.row("b"));
    EXPECT_EQ(world.names(), Rows{"a"}) << "a trial leaves nothing";

    trouble.begin(world);
    EXPECT_EQ(codeOf([&] { ledger.record(world.row("b")); }), trouble.code);
    EXPECT_FALSE(ledger.isSettled());
    EXPECT_EQ(codeOf([&] { ledger.settle(); }), trouble.code);
    EXPECT_EQ(codeOf([&] { ledger.prepare(world.row("c")); }), trouble.code);
    trouble.end(world);
    ledger.prepare(world.row("c"));
    EXPECT_TRUE(ledger.isSettled()) << "what is outstanding is written first";
    ledger.record(world.row("c"));
    EXPECT_EQ(world.names(), (Rows{"a", "b", "c"}));
  }
}

TEST(RemovalLedger, writesEachRowOnceWhereverTheSystemRefuses) {
  const struct {
    const char* name;
    long systemCall;
    int systemCode;
    int code;
    bool isForeseen;
  } refusals[] = {
      {"a full disk", SYS_pwrite64, ENOSPC, SQLITE_FULL, true},
      {"a quota", SYS_pwrite64, EDQUOT, SQLITE_IOERR, true},
      {"a damaged disk", SYS_pwrite64, EIO, SQLITE_IOERR, true},
      {"a disk that can only be read by now", SYS_openat, EROFS, SQLITE_CANTOPEN, true},
      {"a rollback journal that stays", SYS_unlink, EIO, SQLITE_IOERR, false},
      {"a flush that fails", SYS_fdatasync, EIO, SQLITE_IOERR, false},
  };
  for (const auto& refusal : refusals) {
    SCOPED_TRACE(refusal.name);
    LedgerWorld world;
    world.ledger.record(world.row("a"));
    withFailingSystemCall(refusal.systemCall, refusal.systemCode, [&] {
      EXPECT_EQ(codeOf([&] { world.ledger.prepare(world.row("b")); }),
                refusal.isForeseen ? std::optional(refusal.code) : std::nullopt)
          << refusal.name;
      EXPECT_EQ(codeOf([&] { world.ledger.record(world.row("b")); }), refusal.code);
      EXPECT_EQ(codeOf([&] { world.ledger.prepare(world.row("c")); }), refusal.code);
    });
    EXPECT_FALSE(world.ledger.isSettled());
    world.ledger.settle();
    EXPECT_EQ(world.names(), (Rows{"a", "b"}));
    EXPECT_EQ(runSQL(world.path, "PRAGMA integrity_check"), Rows{"ok"});
  }
}

TEST(RemovalLedger, refusesAFileOrADirectoryThatWasMadeImmutable) {
  for (const bool isDirectory : {false, true}) {
    LedgerWorld world;
    const FileDescriptor place(
        open((isDirectory ? world.directory : world.path).c_str(), O_RDONLY | O_CLOEXEC));
    const auto setFlags = [&](int flags) {
      return ioctl(place.get(), FS_IOC_SETFLAGS, &flags) == 0;
    };
    int flags = 0;
    if (ioctl(place.get(), FS_IOC_GETFLAGS, &flags) != 0 || !setFlags(flags | FS_IMMUTABLE_FL))
      GTEST_SKIP() << "nothing can be made immutable here";
    EXPECT_EQ(codeOf([&] { world.ledger.prepare(world.row("a")); }),
              isDirectory ? SQLITE_CANTOPEN : SQLITE_IOERR);
    EXPECT_TRUE(setFlags(flags));
    world.ledger.prepare(world.row("a"));
  }
}

TEST(RemovalLedger, doesNotTakeARowForWrittenThatWentIntoAFileNoLongerOurs) {
  for (const bool comesBack : {true, false}) {
    LedgerWorld world(std::chrono::seconds(20));
    world.other.emplace(world.path).run("BEGIN; SELECT * FROM folder");
    std::atomic<bool> isRecorded = false;
    std::jthread mover([&] {
      // The commit waits for the reader: all that could notice the move before it is done.
      while (!exists(FileURL(world.path + "-journal")) && !isRecorded)
        std::this_thread::yield();
      rename(world.path.c_str(), world.aside.c_str());
      if (!comesBack) writeFile(FileURL(world.path), readFile(FileURL(world.aside)));
      world.other.reset();
    });
    EXPECT_EQ(codeOf([&] { world.ledger.record(world.row("a")); }), SQLITE_READONLY);
    isRecorded = true;
    mover.join();
    EXPECT_FALSE(world.ledger.isSettled());
    EXPECT_EQ(runSQL(world.aside, "SELECT name FROM journalEntry"), Rows{"a"});
    if (comesBack) rename(world.aside.c_str(), world.path.c_str());
    EXPECT_EQ(codeOf([&] { world.ledger.settle(); }),
              comesBack ? std::nullopt : std::optional(SQLITE_READONLY));
    EXPECT_EQ(world.names(), comesBack ? Rows{"a"} : Rows{}) << "once";
  }
}

TEST(RemovalLedger, isNotTakenInByAFileOfAnotherDriveWithTheSameNumber) {
  const TestFileSystem drive(TestFileSystem::Type::tmpfs);
  const TestFileSystem twin(TestFileSystem::Type::tmpfs);
  if (!twin.isMounted()) GTEST_SKIP() << twin.reason();
  Store(twin.url("tidemar.sqlite").path()).insert(folderAt("/f"));
  Store store(drive.url("tidemar.sqlite").path());
  RemovalLedger ledger(store);
  const JournalEntry row = entryOf(store.insert(folderAt("/f")), "a");
  ledger.prepare(row);
  const BindMount over(twin.url(), drive.url());
  EXPECT_EQ(codeOf([&] { ledger.prepare(row); }), SQLITE_READONLY);
}

TEST(RemovalLedger, dropsTheRowOfAForgottenFolderAndWritesTheOthers) {
  LedgerWorld world;
  const Folder forgotten = world.store.insert(folderAt("/g"));
  world.other.emplace(world.path).run("BEGIN EXCLUSIVE");
  for (const JournalEntry& row : {world.row("a"), entryOf(forgotten, "b"), world.row("c")})
    EXPECT_EQ(codeOf([&] { world.ledger.record(row); }), SQLITE_BUSY);
  world.other.reset();
  world.store.deleteFolder(*forgotten.id);
  EXPECT_EQ(codeOf([&] { world.ledger.prepare(entryOf(forgotten, "d")); }), SQLITE_CONSTRAINT);
  EXPECT_EQ(codeOf([&] { world.ledger.record(entryOf(forgotten, "d")); }), SQLITE_CONSTRAINT);
  EXPECT_TRUE(world.ledger.isSettled());
  EXPECT_EQ(world.names(), (Rows{"a", "c"}));
}

TEST(RemovalLedger, losesNoRowOfSeveralThreadsWhileOtherProgramsReadAndWrite) {
  constexpr int threadCount = 3;
  constexpr int rowsPerThread = 8;
  LedgerWorld world(std::chrono::seconds(30));
  std::atomic<bool> isOver = false;
  const auto keepDoing = [&](const char* sql) {
    return std::jthread([&, sql] {
      OtherProgram program(world.path);
      while (!isOver) {
        try {
          program.run(sql);
        } catch (const std::runtime_error&) {
          program = OtherProgram(world.path);  // It met our lock.
        }
      }
    });
  };
  {
    const std::jthread reader = keepDoing("BEGIN; SELECT * FROM journalEntry; COMMIT");
    const std::jthread writer =
        keepDoing("BEGIN IMMEDIATE; UPDATE folder SET automatic = 1 - automatic; COMMIT");
    {
      std::vector<std::jthread> threads;
      for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&] {
          for (int i = 0; i < rowsPerThread; ++i) {
            EXPECT_EQ(codeOf([&] {
                        world.ledger.prepare(world.row("x"));
                        world.ledger.record(world.row("x"));
                      }),
                      std::nullopt);
          }
        });
      }
    }
    isOver = true;
  }
  EXPECT_TRUE(world.ledger.isSettled());
  EXPECT_EQ(world.names().size(), std::size_t{threadCount * rowsPerThread});
}

TEST(RemovalLedger, worksOverAStoreInMemory) {
  Store store;
  RemovalLedger ledger(store);
  const Folder folder = store.insert(folderAt("/f"));
  ledger.settle();
  ledger.prepare(entryOf(folder, "a"));
  EXPECT_TRUE(store.journalSince(Date{0}).empty());
  const JournalEntry entry = ledger.record(entryOf(folder, "a"));
  EXPECT_EQ(store.journalSince(Date{0}), std::vector{entry});
}

}  // namespace
}  // namespace tidemar
