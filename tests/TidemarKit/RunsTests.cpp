#include "TidemarKit/EngineWorld.h"
#include "TidemarKit/System.h"

namespace tidemar::testing {
namespace {

constexpr TemporarySettings toBin{0, std::nullopt, false, false, Disposal::bin};

/// A Temporary folder of five items, "a" the oldest, all due by age, and one run of it.
struct FiveItems : EngineWorld {
  FiveItems() {
    files.draw("/f/\n  e 5 @105\n  d 4 @104\n  c/ 3 @103\n  b 2 @102\n  a 1 @101");
    folder = temporaryFolder("/f", toBin);
  }

  void useSettings(const TemporarySettings& settings) {
    folder.settings = settings;
    engine.store().update(folder);
  }

  RunResult run() { return engine.run(*folder.id, now, gate); }

  /// Whether the run has left what every run does that got past its reading.
  void expectEnded(const RunResult& result) {
    EXPECT_EQ(row(folder).lastRunAt, now);
    std::vector<JournalEntry> stored = engine.store().journalOfFolder(*folder.id);
    std::ranges::reverse(stored);
    EXPECT_EQ(stored, result.journal);
  }

  Folder folder;
  RunGate gate;
};

class Runs : public ::testing::Test, public FiveItems {};

std::string names(const std::vector<JournalEntry>& journal) {
  std::string result;
  for (const JournalEntry& entry : journal)
    result += (result.empty() ? "" : " ") + entry.name;
  return result;
}

/// What an item's failure says: "changed", "missing value", "database" or the errno of the disk.
std::string text(const RemovalFailure& failure) {
  try {
    std::rethrow_exception(failure.error);
  } catch (const Engine::Failure& error) {
    const Engine::Failure::Case changed =
        Engine::Failure::ChangedSincePlanned{failure.item.url.path()};
    return error.failure() == changed ? "changed" : error.what();
  } catch (const MissingValue&) {
    return "missing value";
  } catch (const DatabaseError&) {
    return "database";
  } catch (const PlatformError& error) {
    return std::to_string(error.code());
  }
}

TEST_F(Runs, aStatusReadsInItsOrderAndChangesNothing) {
  const FolderStatus status = engine.status(*folder.id, now);
  EXPECT_EQ(files.operations(), (Lines{"resolve", "tags /f", "capacity /f", "home", "volumes",
                                       "systemDirectories", "list /f", "bootTime"}));
  EXPECT_EQ(status.url, FileURL("/f"));
  EXPECT_TRUE(status.isTagged);
  EXPECT_FALSE(status.isProtectedRoot);
  EXPECT_EQ(status.items[0], item("e", 105, 5));
  EXPECT_EQ(namesOf(status.dueNow), "a b c d e");
  EXPECT_EQ(namesOf(status.upcoming), "a b c d e");
  EXPECT_EQ(status.totalSize(), 15);
  EXPECT_EQ(row(folder), folder);
}

TEST_F(Runs, theNextReadingSeesWhatBecameKnownOrWasForgotten) {
  files.draw("/g/\n  item/ @103\n    inner/ @103");
  const Folder outer = temporaryFolder("/g", toBin);
  const auto due = [&] { return namesOf(engine.status(*outer.id, now).dueNow); };
  EXPECT_EQ(due(), "item");
  const Folder inner = temporaryFolder("/g/item/inner", toBin);
  EXPECT_EQ(due(), "") << "it holds a Temporary folder";
  engine.store().deleteFolder(*inner.id);
  EXPECT_EQ(due(), "item");
}

TEST_F(Runs, theFactsOfTheMomentReachThePlan) {
  useSettings({std::nullopt, std::nullopt, true, false, Disposal::delete_});
  files.capacity = {97, 1000};
  EXPECT_EQ(namesOf(engine.status(*folder.id, now).dueNow), "a b");
  useSettings({std::nullopt, std::nullopt, false, true, Disposal::bin});
  files.boot = Date{103};
  EXPECT_EQ(namesOf(engine.status(*folder.id, now).dueNow), "") << "it ran after the start";
  folder.lastRunAt = Date{102};
  engine.store().update(folder);
  EXPECT_EQ(namesOf(engine.status(*folder.id, now).dueNow), "a b");
  EXPECT_EQ(names(run().journal), "a b");
  EXPECT_EQ(names(run().journal), "") << "once a start";
}

TEST_F(Runs, eachItemIsCheckedJustBeforeItGoesOldestFirst) {
  useSettings({std::nullopt, 10, false, false, Disposal::bin});
  const RunResult result = run();
  EXPECT_EQ(names(result.journal), "a b c");
  EXPECT_EQ(files.names("/f"), "e d");
  const Lines& all = files.operations();
  EXPECT_EQ(Lines(all.end() - 9, all.end()),
            (Lines{"tags /f", "values /f/a", "trash /f/a", "tags /f", "values /f/b", "trash /f/b",
                   "tags /f", "values /f/c", "trash /f/c"}));
  expectEnded(result);
}

TEST_F(Runs, theJournalTellsAllOfWhatWentAndAPlaceInTheBinOfWhatHasOne) {
  files.draw("/home/ada/Trash/a");
  useSettings({0, 14, false, false, Disposal::bin});
  JournalEntry a = run().journal.at(0);
  EXPECT_EQ(a, (JournalEntry{a.id, *folder.id, Disposal::bin, "a", "/home/ada/Trash/a.2", 1,
                             RuleSet{Rule::age, Rule::size}, now, std::nullopt}));
  EXPECT_EQ(files.changes().front(), "trash /f/a");

  files.draw("/f/new 1 @100");
  useSettings({0, std::nullopt, false, false, Disposal::delete_});
  const RunResult result = run();
  EXPECT_EQ(files.changes().back(), "remove /f/new");
  EXPECT_EQ(result.journal.at(0).binnedPath, std::nullopt);
  EXPECT_EQ(result.journal.at(0).disposal, Disposal::delete_);
  EXPECT_EQ(result.journal.at(0).reasons, RuleSet{Rule::age});
}

using Change = std::function<void(FiveItems&)>;

TEST(RunsWithNothingToDo, areStillRuns) {
  const auto set = [](const TemporarySettings& settings) -> Change {
    return [=](FiveItems& w) { w.useSettings(settings); };
  };
  const std::tuple<const char*, Change, const char*> rows[] = {
      {"nothing is due", set({90, std::nullopt, true, true, Disposal::bin}), "a b c d e"},
      {"no rule is on", set({std::nullopt, std::nullopt, false, false, Disposal::bin}), ""},
      {"the tag is gone", [](auto& w) { w.files.tags("/f") = {"tidemar: temporary"}; }, ""},
      {"a volume's root", [](auto& w) { w.files.volumes = {FileURL("/f")}; }, ""},
      {"a fixed place", [](auto& w) { w.files.systemDirectories = {FileURL("/f")}; }, ""},
      {"the home folder", [](auto& w) { w.files.home = FileURL("/f"); }, ""},
  };
  for (const auto& [name, arrange, upcoming] : rows) {
    SCOPED_TRACE(name);
    FiveItems world;
    arrange(world);
    const FolderStatus status = world.engine.status(*world.folder.id, world.now);
    EXPECT_EQ(namesOf(status.dueNow), "");
    EXPECT_EQ(namesOf(status.upcoming), upcoming);
    const RunResult result = world.run();
    EXPECT_TRUE(result.journal.empty() && result.failures.empty());
    EXPECT_EQ(world.files.changes(), Lines{});
    world.expectEnded(result);
  }
}

TEST(RunsOfAnUnreadableFolder, leaveItAlone) {
  for (const char* line : {"resolve", "tags /f", "capacity /f", "volumes", "list /f", "bootTime"}) {
    FiveItems world;
    world.files.fail(line, EIO);
    EXPECT_ANY_THROW(world.run()) << line;
    EXPECT_ANY_THROW(world.engine.status(*world.folder.id, world.now)) << line;
    EXPECT_EQ(world.files.changes(), Lines{}) << line;
    EXPECT_EQ(world.row(world.folder), world.folder) << line;
  }
  FiveItems world;
  world.files.capacity.total.reset();
  EXPECT_THROW(world.run(), System::Failure);
  EXPECT_EQ(failureOf([&] { world.engine.run(99, world.now, world.gate); }),
            Engine::Failure::Case(Engine::Failure::FolderNotFound{99}));
  EXPECT_EQ(world.files.changes(), Lines{});
}

TEST(RunsThatMayNotGoOn, endAtTheNextItem) {
  const std::tuple<const char*, Change, bool> rows[] = {
      {"the tag was taken off", [](auto& w) { w.files.tags("/f").clear(); }, false},
      {"the tags can't be read", [](auto& w) { w.files.fail("tags /f", EIO); }, false},
      {"the gate was closed", [](auto& w) { w.gate.close(); }, true},
  };
  for (const auto& [name, disturb, isCutShort] : rows) {
    SCOPED_TRACE(name);
    FiveItems world;
    world.files.before("trash /f/b", [&] { disturb(world); });
    const RunResult result = world.run();
    EXPECT_EQ(names(result.journal), "a b");
    EXPECT_TRUE(result.failures.empty());
    EXPECT_EQ(world.files.names("/f"), "e d c");
    if (isCutShort) {
      EXPECT_EQ(world.row(world.folder).lastRunAt, world.added) << "the restart rule isn't done";
    } else {
      world.expectEnded(result);
    }
  }
}

TEST(RunsOverAFailingItem, reportItAndGoOn) {
  const auto dated = [](std::optional<Date> date) -> Change {
    return [=](FiveItems& w) {
      ResourceValues& values = w.files.values("/f/b");
      values.addedToDirectoryDate = values.contentModificationDate = date;
    };
  };
  const auto draw = [](const char* drawing) -> Change {
    return [=](FiveItems& w) { w.files.draw(drawing); };
  };
  const auto fail = [](const char* line, int code) -> Change {
    return [=](FiveItems& w) { w.files.fail(line, code); };
  };
  const struct {
    const char* name;
    Change disturb;
    std::string failure = "changed";
    std::string item = "b";
    bool itemStays = true;
  } rows[] = {
      {"edited by the least", dated(Date{102.0000001})},
      {"with an older date", dated(Date{50})},
      {"without a date any more", dated(std::nullopt)},
      {"hidden meanwhile", [](auto& w) { w.files.values("/f/b").isHidden = true; }},
      {"replaced by a directory",
       [](auto& w) { w.files.erase("/f/b"), w.files.draw("/f/b/ @102\n  new @1999"); }},
      {"with a new file in it", draw("/f/c/new @1999"), "changed", "c"},
      {"with a part that can't be read", draw("/f/c/locked/ unreadable"), "changed", "c"},
      {"gone", [](auto& w) { w.files.erase("/f/b"); }, std::to_string(ENOENT), "b", false},
      {"unreadable", fail("values /f/b", EIO), std::to_string(EIO)},
      {"that the Bin refuses", fail("trash /f/b", EXDEV), std::to_string(EXDEV)},
      {"whose place in the Bin isn't told",
       [](auto& w) {
         w.files.before("trash /f/b", [&] { w.files.binTellsPlace = false; });
         w.files.before("trash /f/c", [&] { w.files.binTellsPlace = true; });
       },
       "missing value", "b", false},
      {"whose row is refused",
       [](auto& w) {
         w.alter(
             "CREATE TRIGGER refuse BEFORE INSERT ON journalEntry WHEN NEW.name = 'b' "
             "BEGIN SELECT RAISE(ABORT, 'no'); END");
       },
       "database"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    FiveItems world;
    world.files.before("trash /f/a", [&] { row.disturb(world); });
    const RunResult result = world.run();
    ASSERT_EQ(result.failures.size(), 1U);
    EXPECT_EQ(result.failures[0].item.url, FileURL("/f/" + row.item));
    EXPECT_EQ(text(result.failures[0]), row.failure);
    EXPECT_EQ(names(result.journal), row.item == "b" ? "a c d e" : "a b d e");
    EXPECT_EQ(world.files.exists("/f/" + row.item), row.itemStays);
    EXPECT_EQ(world.row(world.folder).lastRunAt, world.now);
    EXPECT_EQ(world.engine.store().journalOfFolder(*world.folder.id).size(), 4U);
  }
}

TEST_F(Runs, whatTheUserChangesMeanwhileIsNotPutBack) {
  files.before("trash /f/a", [&] { files.values("/f/b").totalFileAllocatedSize = 1000; });
  files.before("trash /f/c", [&] {
    engine.store().change(folder.id, [](Folder& changed) { changed.settings.maxAgeDays = 30; });
  });
  const RunResult result = run();
  ASSERT_EQ(names(result.journal), "a b c d e");
  EXPECT_EQ(result.journal[1].size, 2) << "one that only grew goes and is journaled as planned";
  EXPECT_EQ(row(folder).settings.maxAgeDays, 30);
  EXPECT_EQ(row(folder).lastRunAt, now);
  files.before("bootTime", [&] { engine.store().deleteFolder(*folder.id); });
  EXPECT_THROW(run(), RecordNotFound) << "it was forgotten";
}

TEST_F(Runs, waitForAFailingDatabaseOnce) {
  std::optional<OtherProgram> other;
  files.before("values /f/b", [&] { other.emplace(database).run("BEGIN EXCLUSIVE"); });
  EXPECT_THROW(run(), DatabaseError);
  EXPECT_EQ(files.names("/f"), "e d c b");
  EXPECT_EQ(std::ranges::count(files.operations(), "values /f/c"), 0);
}

TEST_F(Runs, writeTheRowOfTheItemInHandLaterAndTakeNothingElseUntilThen) {
  files.before("trash /f/b", [&] { alter("ALTER TABLE journalEntry RENAME TO hidden"); });
  EXPECT_EQ(names(run().journal), "a");
  EXPECT_EQ(files.names("/f"), "e d c");
  alter(
      "ALTER TABLE hidden RENAME TO journalEntry;"
      "CREATE TRIGGER refuse BEFORE UPDATE ON folder BEGIN SELECT RAISE(ABORT, 'no'); END");
  EXPECT_THROW(run(), DatabaseError) << "the end can't be written";
  EXPECT_EQ(files.names("/f"), "");
  EXPECT_EQ(engine.store().journalOfFolder(*folder.id).size(), 5U);
}

}  // namespace
}  // namespace tidemar::testing
