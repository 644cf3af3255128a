#include <linux/fs.h>
#include <sqlite3.h>
#include <sys/ioctl.h>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "TidemarKit/Store/LedgerWorld.h"

namespace tidemar::testing {
namespace {

enum class By { sql, lock, shell };

/// What may become of the file in the middle of a run, and how it ends: by SQL, by the lock of a
/// program that has begun with this SQL, or by the shell, which stands beside the file's directory.
struct Trouble {
  By by;
  int code;  ///< With which no row can be written meanwhile.
  std::string begin;
  std::string end;
};

Trouble trigger(int code, const std::string& moment, const std::string& action) {
  return {By::sql, code,
          "CREATE TRIGGER planted " + moment + " INSERT ON journalEntry BEGIN " + action + "; END",
          "DROP TRIGGER planted"};
}

const Trouble troubles[] = {
    {By::lock, SQLITE_BUSY, "BEGIN; SELECT * FROM folder", ""},
    {By::lock, SQLITE_BUSY, "BEGIN IMMEDIATE", ""},
    {By::lock, SQLITE_BUSY, "BEGIN EXCLUSIVE", ""},

    {By::shell, SQLITE_READONLY, "mv Tidemar/tidemar.sqlite .", "mv tidemar.sqlite Tidemar"},
    {By::shell, SQLITE_READONLY, "ln Tidemar/* . && rm Tidemar/*", "mv tidemar.sqlite Tidemar"},
    {By::shell, SQLITE_READONLY, "mv Tidemar/* . && cp tidemar.sqlite Tidemar",
     "mv tidemar.sqlite Tidemar"},
    {By::shell, SQLITE_READONLY, "mv Tidemar aside", "mv aside Tidemar"},
    {By::shell, SQLITE_IOERR, "mkdir Tidemar/tidemar.sqlite-journal", "rmdir Tidemar/*-journal"},

    trigger(SQLITE_CONSTRAINT, "BEFORE", "SELECT RAISE(ABORT, 'no')"),
    trigger(SQLITE_MISMATCH, "BEFORE", "SELECT RAISE(IGNORE)"),
    trigger(SQLITE_MISMATCH, "AFTER", "DELETE FROM journalEntry WHERE id = NEW.id"),
    trigger(SQLITE_MISMATCH, "AFTER", "UPDATE journalEntry SET size = size + 1 WHERE id = NEW.id"),
    trigger(SQLITE_MISMATCH, "AFTER", "UPDATE journalEntry SET id = id + 1000 WHERE id = NEW.id"),

    {By::sql, SQLITE_ERROR, "ALTER TABLE journalEntry DROP COLUMN undoneAt",
     "ALTER TABLE journalEntry ADD COLUMN undoneAt DATETIME"},
    {By::sql, SQLITE_ERROR, "ALTER TABLE journalEntry RENAME TO other",
     "ALTER TABLE other RENAME TO journalEntry"},
    // A later schema, which wants one value more.
    {By::sql, SQLITE_CONSTRAINT,
     "ALTER TABLE journalEntry RENAME TO other;"
     "CREATE TABLE journalEntry (id INTEGER PRIMARY KEY, folderID, disposal, name, binnedPath,"
     " size, reasons, performedAt, undoneAt, colour NOT NULL)",
     "DROP TABLE journalEntry; ALTER TABLE other RENAME TO journalEntry"},
};

TEST(RemovalLedger, letsNothingGoWhoseRowCouldNotBeWrittenAndKeepsTheRowOfWhatWent) {
  for (const Trouble& trouble : troubles) {
    SCOPED_TRACE(trouble.begin);
    LedgerWorld world;
    const auto act = [&](const std::string& action) {
      if (trouble.by == By::sql) runSQL(world.path, action);
      if (trouble.by == By::shell) runCommand("cd '" + world.parent.path() + "' && " + action);
      if (trouble.by != By::lock) return;
      world.other.reset();
      if (!action.empty()) world.other.emplace(world.path).run(action);
    };
    RemovalLedger& ledger = world.ledger;
    ledger.prepare(world.row("a"));
    EXPECT_EQ(ledger.record(world.row("a")).id, 1);

    act(trouble.begin);
    EXPECT_EQ(databaseCodeOf([&] { ledger.prepare(world.row("b")); }), trouble.code);
    EXPECT_TRUE(ledger.isSettled());
    act(trouble.end);
    ledger.prepare(world.row("b"));
    EXPECT_EQ(world.names(), Rows{"a"}) << "a trial leaves nothing";

    act(trouble.begin);
    EXPECT_EQ(databaseCodeOf([&] { ledger.record(world.row("b")); }), trouble.code);
    EXPECT_FALSE(ledger.isSettled());
    EXPECT_EQ(databaseCodeOf([&] { ledger.settle(); }), trouble.code);
    EXPECT_EQ(databaseCodeOf([&] { ledger.prepare(world.row("c")); }), trouble.code);
    act(trouble.end);
    ledger.prepare(world.row("c"));
    EXPECT_TRUE(ledger.isSettled()) << "what is outstanding is written first";
    ledger.record(world.row("c"));
    EXPECT_EQ(world.names(), (Rows{"a", "b", "c"}));
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
    EXPECT_EQ(databaseCodeOf([&] { world.ledger.prepare(world.row("a")); }),
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
    EXPECT_EQ(databaseCodeOf([&] { world.ledger.record(world.row("a")); }), SQLITE_READONLY);
    isRecorded = true;
    mover.join();
    EXPECT_FALSE(world.ledger.isSettled());
    EXPECT_EQ(runSQL(world.aside, "SELECT name FROM journalEntry"), Rows{"a"});
    if (comesBack) rename(world.aside.c_str(), world.path.c_str());
    EXPECT_EQ(databaseCodeOf([&] { world.ledger.settle(); }),
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
  EXPECT_EQ(databaseCodeOf([&] { ledger.prepare(row); }), SQLITE_READONLY);
}

TEST(RemovalLedger, dropsTheRowOfAForgottenFolderAndWritesTheOthers) {
  LedgerWorld world;
  const Folder forgotten = world.store.insert(folderAt("/g"));
  world.other.emplace(world.path).run("BEGIN EXCLUSIVE");
  for (const JournalEntry& row : {world.row("a"), entryOf(forgotten, "b"), world.row("c")})
    EXPECT_EQ(databaseCodeOf([&] { world.ledger.record(row); }), SQLITE_BUSY);
  world.other.reset();
  world.store.deleteFolder(*forgotten.id);
  EXPECT_EQ(databaseCodeOf([&] { world.ledger.prepare(entryOf(forgotten, "d")); }),
            SQLITE_CONSTRAINT);
  EXPECT_EQ(databaseCodeOf([&] { world.ledger.record(entryOf(forgotten, "d")); }),
            SQLITE_CONSTRAINT);
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
    const auto record = [&] {
      for (int i = 0; i < rowsPerThread; ++i) {
        world.ledger.prepare(world.row("x"));
        const JournalEntry row = world.ledger.record(world.row("x"));
        EXPECT_EQ(world.store.journalEntry(*row.id), row);
        world.store.change(world.folder.id,
                           [](Folder& folder) { folder.lastRunAt = folder.lastRunAt + 1; });
      }
    };
    {
      const std::jthread threads[threadCount] = {std::jthread(record), std::jthread(record),
                                                 std::jthread(record)};
    }
    isOver = true;
  }
  EXPECT_TRUE(world.ledger.isSettled());
  EXPECT_EQ(world.names().size(), std::size_t{threadCount * rowsPerThread});
  EXPECT_EQ(world.store.folders()[0].lastRunAt,
            world.folder.lastRunAt + threadCount * rowsPerThread);
}

}  // namespace
}  // namespace tidemar::testing
