#include <linux/fs.h>
#include <sys/ioctl.h>

#include "TidemarKit/Store/LedgerWorld.h"
#include "TidemarKit/Store/SpaceReserve.h"

namespace tidemar::testing {
namespace {

using Type = TestFileSystem::Type;

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
  const JournalEntry d = entryOf(forgotten, "d");
  EXPECT_EQ(databaseCodeOf([&] { world.ledger.prepare(d); }), SQLITE_CONSTRAINT);
  EXPECT_EQ(databaseCodeOf([&] { world.ledger.record(d); }), SQLITE_CONSTRAINT);
  EXPECT_TRUE(world.ledger.isSettled());
  EXPECT_EQ(world.names(), (Rows{"a", "c"}));
}

TEST(RemovalLedger, losesNoRowOfSeveralThreadsWhileOtherProgramsReadAndWrite) {
  constexpr int rowsPerThread = 8;
  constexpr int rowCount = 3 * rowsPerThread;
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
      const std::jthread threads[] = {std::jthread(record), std::jthread(record),
                                      std::jthread(record)};
    }
    isOver = true;
  }
  EXPECT_TRUE(world.ledger.isSettled());
  EXPECT_EQ(world.names().size(), std::size_t{rowCount});
  EXPECT_EQ(world.store.folders()[0].lastRunAt, world.folder.lastRunAt + rowCount);
}

/// Whether this many bytes could be added to a file and reached the disk.
bool append(const FileURL& url, std::size_t count) {
  const FileDescriptor file(
      open(url.path().c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
  const std::string bytes(count, 'x');
  return write(file.get(), bytes.data(), count) == static_cast<ssize_t>(count) &&
         fsync(file.get()) == 0;
}

/// A database on a small disk that can be filled to the last byte.
class FullDisk : public ::testing::TestWithParam<Type> {
 protected:
  void SetUp() override {
    if (!disk.isMounted()) GTEST_SKIP() << disk.reason();
    world.emplace(std::chrono::milliseconds(), disk.url().path());
    world->ledger.settle();
    ASSERT_TRUE(hasReserve());
    ASSERT_TRUE(append(disk.url("item"), std::size_t{36} << 20U));
  }

  bool hasReserve() const { return exists(FileURL(world->directory + "/tidemar.reserve")); }
  void prepare(const char* name, Disposal disposal) {
    world->ledger.prepare(world->row(name, disposal));
  }

  void fill() const {
    for (std::size_t count = std::size_t{1} << 20U; count > 0; count /= 4)
      while (append(disk.url("other"), count)) {
      }
  }

  void freeSpace() const {
    unlink(disk.url("item").path().c_str());
    sync();
  }

  TestFileSystem disk{GetParam(), GetParam() == Type::tmpfs ? "size=64m" : ""};
  std::optional<LedgerWorld> world;
};

TEST_P(FullDisk, aDeletionHasRoomForItsRowAndTheBinWhichFreesNoneDoesNotTakeIt) {
  fill();
  EXPECT_THROW(prepare("binned", Disposal::bin), DatabaseError);
  EXPECT_TRUE(hasReserve());
  prepare("deleted", Disposal::delete_);
  EXPECT_FALSE(hasReserve());
  world->ledger.record(world->row("deleted", Disposal::delete_));
  EXPECT_EQ(world->names(), Rows{"deleted"});

  fill();
  EXPECT_THROW(prepare("next", Disposal::delete_), DatabaseError);
  world->ledger.settle();
  EXPECT_FALSE(hasReserve()) << "the last of the disk is not for us";
  freeSpace();
  prepare("next", Disposal::delete_);
  EXPECT_TRUE(hasReserve());
}

TEST_P(FullDisk, whatWentBeforeTheDiskWasFullGetsItsRowToo) {
  fill();
  world->ledger.record(world->row("a"));
  EXPECT_FALSE(hasReserve());
  fill();
  EXPECT_THROW(world->ledger.record(world->row("b")), DatabaseError);
  EXPECT_FALSE(world->ledger.isSettled());
  freeSpace();
  world->ledger.settle();
  EXPECT_EQ(world->names(), (Rows{"a", "b"}));
  EXPECT_EQ(runSQL(world->path, "PRAGMA integrity_check"), Rows{"ok"});
  EXPECT_TRUE(hasReserve());
}

TEST(SpaceReserve, aDiskThatTakesNoMoreFilesIsFullToo) {
  const TestFileSystem disk(Type::tmpfs, "size=64m,nr_inodes=10");
  if (!disk.isMounted()) GTEST_SKIP() << disk.reason();
  LedgerWorld world({}, disk.url().path());
  world.ledger.settle();
  for (int i = 0; append(disk.url(std::to_string(i)), 1); ++i) {
  }
  world.ledger.prepare(world.row("a", Disposal::delete_));
  world.ledger.record(world.row("a", Disposal::delete_));
  EXPECT_FALSE(exists(FileURL(world.directory + "/tidemar.reserve")));
}

TEST(SpaceReserve, whatIsNotOursIsNeitherReplacedNorGivenUp) {
  const TemporaryDirectory directory;
  const FileURL file = directory.url("tidemar.reserve");
  const std::string content(SpaceReserve::size, 'x');
  writeFile(directory.url("precious"), content);
  // A link, and a second name of a file.
  for (const auto plant : {symlink, link}) {
    ASSERT_EQ(plant(directory.path("precious").c_str(), file.path().c_str()), 0);
    SpaceReserve reserve(directory.url());
    reserve.keep();
    EXPECT_FALSE(reserve.giveUp());
    EXPECT_TRUE(exists(file));
    EXPECT_EQ(readFile(directory.url("precious")), content);
    unlink(file.path().c_str());
  }
}

TEST(SpaceReserve, ofOneThatCannotBeMadeWholeNoPartIsLeft) {
  const TemporaryDirectory directory;
  const auto keep = [&] { SpaceReserve(directory.url()).keep(); };
  withFailingSystemCall(SYS_fsync, EIO, keep);
  EXPECT_EQ(namesIn(directory.url()), std::set<std::string>{});
  keep();
  EXPECT_EQ(namesIn(directory.url()), std::set<std::string>{"tidemar.reserve"});
}

INSTANTIATE_TEST_SUITE_P(SpaceReserve, FullDisk,
                         ::testing::Values(Type::ext4, Type::xfs, Type::btrfs, Type::tmpfs),
                         [](const auto& type) { return nameOf(type.param); });

}  // namespace
}  // namespace tidemar::testing
