#include "TidemarKit/EngineWorld.h"

namespace tidemar::testing {
namespace {

using Failure = Engine::Failure;

/// A folder whose item "a" lies in the Bin as "a.2", and the entry that says so.
class PutBack : public ::testing::Test, public EngineWorld {
 protected:
  PutBack() {
    files.draw("/f/\n/home/ada/Trash/\n  a.2 7 @100");
    folder = temporaryFolder("/f", {});
    entry = entryOf(folder, "a");
    entry.binnedPath = "/home/ada/Trash/a.2";
    entry = engine.store().insert(entry);
  }

  /// Changes the entry's row.
  void store(const JournalEntry& changed) {
    entry = changed;
    engine.store().update(entry);
  }

  void undo() { engine.undo(*entry.id, now); }
  Failure::Case failure() {
    return failureOf([&] { undo(); });
  }
  JournalEntry storedEntry() const { return engine.store().journalEntry(*entry.id).value(); }

  /// Expects that nothing happened: not to the disk and not to the entry.
  void expectUntouched() {
    EXPECT_EQ(files.changes(), Lines{});
    EXPECT_EQ(storedEntry(), entry);
  }

  Folder folder;
  JournalEntry entry;
};

TEST_F(PutBack, bringsTheItemHomeUnderItsOwnNameOnceWhereverItsFolderIs) {
  files.rename("/f", "/new/place");
  files.rename("/home/ada/Trash/a.2", "/home/ada/Trash/\xff");
  entry.name = "\xfe ..";
  entry.binnedPath = "/home/ada/Trash/\xff";
  store(entry);
  undo();
  EXPECT_EQ(files.changes(), Lines{"move /home/ada/Trash/\xff to /new/place/\xfe .."});
  JournalEntry expected = entry;
  expected.undoneAt = now;
  EXPECT_EQ(storedEntry(), expected);
  EXPECT_EQ(row(folder).path, "/new/place");
  EXPECT_EQ(row(folder).lastRunAt, folder.lastRunAt) << "a put-back is no run";
  EXPECT_EQ(failure(), Failure::Case(Failure::AlreadyUndone{}));

  engine.forget(folder);
  EXPECT_EQ(failure(), Failure::Case(Failure::JournalEntryNotFound{*entry.id}));
}

TEST_F(PutBack, looksAtNoDiskForAnEntryThatCannotComeBack) {
  for (const std::string& name :
       {std::string(".."), std::string("."), std::string(), std::string("a/b"), std::string("/etc"),
        std::string("../a"), std::string("a/"), std::string("a\0b", 3)}) {
    entry.name = name;
    store(entry);
    EXPECT_EQ(codeOf([&] { undo(); }), EINVAL) << ::testing::PrintToString(name);
  }
  entry.binnedPath.reset();
  store(entry);
  EXPECT_EQ(failure(), Failure::Case(Failure::DeletedPermanently{}));
  entry.undoneAt = added;
  store(entry);
  EXPECT_EQ(failure(), Failure::Case(Failure::AlreadyUndone{})) << "that is said first";
  EXPECT_EQ(files.operations(), Lines{});
}

TEST_F(PutBack, thatCannotBeDoneChangesNothingAndCanBeTriedAgain) {
  const Failure::Case taken = Failure::OriginalPathTaken{"/f/a"};
  const Failure::Case gone = Failure::GoneFromBin{"/home/ada/Trash/a.2"};
  files.draw("/f/a -> /nowhere");
  EXPECT_EQ(failure(), taken);
  files.binKnowsItsItems = false;
  EXPECT_EQ(failure(), gone) << "that is said first";
  files.erase("/f/a");
  EXPECT_EQ(failure(), gone);
  files.binKnowsItsItems = true;
  files.rename("/f", std::string(files.binPath) + "/f");
  EXPECT_EQ(codeOf([&] { undo(); }), ENOENT) << "its folder is lost";
  files.rename(std::string(files.binPath) + "/f", "/f");
  expectUntouched();
  files.before("move /home/ada/Trash/a.2 to /f/a", [&] { files.draw("/f/a 1 @1"); });
  EXPECT_EQ(codeOf([&] { undo(); }), EEXIST) << "in the last moment";
  files.erase("/f/a");
  EXPECT_EQ(storedEntry(), entry);
  undo();
  EXPECT_TRUE(files.exists("/f/a")) << "it can be tried again";
}

const char* const refuseUpdates =
    "CREATE TRIGGER refuse BEFORE UPDATE ON journalEntry BEGIN SELECT RAISE(ABORT, 'no'); END";

TEST_F(PutBack, overAFailingDatabaseKeepsTheRowOfTheItemInHandAndMovesNoOther) {
  alter(refuseUpdates);
  EXPECT_THROW(undo(), DatabaseError);
  expectUntouched();
  alter("DROP TRIGGER refuse");
  files.draw("/home/ada/Trash/b 1 @1");
  JournalEntry second = entry;
  second.id.reset();
  second.name = "b";
  second.binnedPath = "/home/ada/Trash/b";
  second = engine.store().insert(second);
  files.before("move /home/ada/Trash/a.2 to /f/a", [&] { alter(refuseUpdates); });
  EXPECT_THROW(undo(), DatabaseError);
  EXPECT_TRUE(files.exists("/f/a"));
  EXPECT_THROW(engine.undo(*second.id, now), DatabaseError);
  EXPECT_FALSE(files.exists("/f/b"));

  alter("DROP TRIGGER refuse");
  EXPECT_EQ(failure(), Failure::Case(Failure::AlreadyUndone{}));
  EXPECT_EQ(storedEntry().undoneAt, now);
}

}  // namespace
}  // namespace tidemar::testing
