#include "TidemarKit/Store/LedgerWorld.h"

namespace tidemar::testing {
namespace {

Rows names(const std::vector<JournalEntry>& entries) {
  Rows result;
  std::ranges::transform(entries, std::back_inserter(result), &JournalEntry::name);
  return result;
}

/// A store on a file whose rows a test can look at and spoil.
class StoreOnFile : public ::testing::Test {
 protected:
  Rows run(const std::string& sql) const { return runSQL(path, sql); }

  TemporaryDirectory directory;
  std::string path = directory.path("tidemar.sqlite");
  Store store{path};
};

TEST_F(StoreOnFile, foldersAreStoredColumnByColumn) {
  const std::string bytes("\x00\xff'", 3);
  Folder folder = folderAt("/home/\xff\xfe/n\nl", 1763763095.25);
  folder.bookmark = bytes;
  folder.settings = {.maxAgeDays = -1,
                     .sizeLimit = std::int64_t{1} << 60,
                     .automatic = true,
                     .emptyOnRestart = false,
                     .disposal = Disposal::delete_};
  folder.lastRunAt = Date{-1.5};
  folder = store.insert(folder);
  EXPECT_EQ(store.folder(folder.id.value()), folder);
  EXPECT_EQ(
      run("SELECT id, hex(bookmark), typeof(bookmark), hex(path), typeof(path), maxAgeDays,"
          " sizeLimit, automatic, emptyOnRestart, disposal, createdAt, lastRunAt FROM folder"),
      (Rows{"1|00FF27|blob|2F686F6D652FFFFE2F6E0A6C|text|-1|1152921504606846976|1|0|delete|"
            "2025-11-21 22:11:35.250|1969-12-31 23:59:58.500"}));

  folder.bookmark = "";
  folder.settings = {};
  folder.settings.maxAgeDays = std::nullopt;
  folder.settings.emptyOnRestart = true;
  folder.lastRunAt = Date{0};
  store.update(folder);
  EXPECT_EQ(store.folders(), std::vector{folder});
  EXPECT_EQ(run("SELECT typeof(bookmark), maxAgeDays, sizeLimit, automatic, emptyOnRestart,"
                " disposal, createdAt, lastRunAt FROM folder"),
            (Rows{"blob|NULL|NULL|0|1|bin|2025-11-21 22:11:35.250|1970-01-01 00:00:00.000"}));
}

TEST_F(StoreOnFile, entriesAreStoredColumnByColumn) {
  const Folder folder = store.insert(folderAt("/a"));
  JournalEntry entry = entryOf(folder, "caf\xe9");
  entry.binnedPath = "/bin/caf\xe9";
  entry.reasons = {Rule::emptyOnRestart, Rule::age};
  entry = store.insert(entry);
  JournalEntry deleted = entryOf(folder, "", 0);
  deleted.disposal = Disposal::delete_;
  deleted.reasons = {Rule::size};
  deleted = store.insert(deleted);
  const std::string columns =
      "SELECT id, folderID, disposal, hex(name), binnedPath, size, reasons, performedAt, undoneAt"
      " FROM journalEntry";
  const std::string deletedRow = "2|1|delete||NULL|12|[\"size\"]|1970-01-01 00:00:00.000|NULL";
  EXPECT_EQ(run(columns), (Rows{"1|1|bin|636166E9|/bin/caf\xe9|12|[\"age\",\"emptyOnRestart\"]|"
                                "1970-01-01 00:33:20.000|NULL",
                                deletedRow}));
  EXPECT_EQ(store.journalEntry(2), deleted);

  entry.undoneAt = Date{2000.125};
  store.update(entry);
  EXPECT_EQ(store.journalEntry(entry.id.value()), entry);
  EXPECT_EQ(run(columns), (Rows{"1|1|bin|636166E9|/bin/caf\xe9|12|[\"age\",\"emptyOnRestart\"]|"
                                "1970-01-01 00:33:20.000|1970-01-01 00:33:20.125",
                                deletedRow}));
}

TEST(Store, foldersComeInTheOrderInWhichTheyWereAddedAndByTheExactBytesOfTheirPath) {
  Store store;
  Folder late = store.insert(folderAt("/Late", 3000));
  const Folder early = store.insert(folderAt("/early", 1000));
  const Folder twin = store.insert(folderAt("/early", 1000));
  late.lastRunAt = Date{1};
  store.update(late);
  EXPECT_EQ(store.folders(), (std::vector{early, twin, late}));
  EXPECT_EQ(store.folder("/early"), early);
  for (const char* other : {"/late", "/Late/", "/Late ", "/L%", "/", ""})
    EXPECT_EQ(store.folder(std::string(other)), std::nullopt) << other;
  EXPECT_EQ(store.folder(std::string("/Late\0", 6)), std::nullopt);
  EXPECT_EQ(store.folder(99), std::nullopt);
  EXPECT_EQ(store.journalEntry(99), std::nullopt);
}

TEST_F(StoreOnFile, thePlacesHaveAnotherVersionAfterEachChangeOfThem) {
  const Folder folder = store.insert(folderAt("/a", 1));
  const auto set = [&](auto member, auto value) {
    return [=, this] { store.change(folder.id, [&](Folder& row) { row.*member = value; }); };
  };
  const std::function<void()> writes[] = {
      set(&Folder::lastRunAt, Date{2}),  // The only one that is about no place.
      [&] { store.insert(folderAt("/b", 2)); },
      [&] { store.insert(folderAt("/c", 3), store.folders()); },
      set(&Folder::path, "/d"),
      set(&Folder::bookmark, "x"),
      [&] { store.update(folder); },
      [&] { run("UPDATE folder SET path = '/e'"); },
      [&] { store.deleteFolder(*folder.id); },
  };
  for (const auto& write : writes) {
    const Store::PlacesVersion before = store.placesVersion();
    write();
    EXPECT_EQ(store.placesVersion() == before, &write == writes) << &write - writes;
  }
}

TEST(Store, theJournalComesNewestFirstFromTheGivenInstantOn) {
  Store store;
  const Folder a = store.insert(folderAt("/a"));
  const Folder b = store.insert(folderAt("/b"));
  store.insert(entryOf(a, "run2 first", 2000.5));
  store.insert(entryOf(b, "run2 second", 2000.5));
  store.insert(entryOf(a, "run1", 2000.499));
  store.insert(entryOf(a, "run3", 2000.501));
  EXPECT_EQ(names(store.journalSince(Date{2000.5})), (Rows{"run3", "run2 second", "run2 first"}));
  EXPECT_EQ(names(store.journalSince(Date{2000.502})), Rows{});
  EXPECT_EQ(names(store.journalOfFolder(*a.id)), (Rows{"run3", "run2 first", "run1"}));

  EXPECT_TRUE(store.deleteFolder(*a.id));
  EXPECT_EQ(names(store.journalSince(Date{0})), Rows{"run2 second"});
  EXPECT_FALSE(store.deleteFolder(*a.id));
  store.deleteFolder(*b.id);
  EXPECT_GT(store.insert(folderAt("/c")).id.value(), *b.id) << "an id is never used again";
}

TEST(Store, writesThatDoNotFitLeaveNothing) {
  Store store;
  Folder folder = store.insert(folderAt("/a"));
  JournalEntry entry = entryOf(folder, "x");
  entry.folderID = 99;
  const DatabaseError error = databaseErrorOf([&] { store.insert(entry); });
  EXPECT_EQ(error.code(), SQLITE_CONSTRAINT_FOREIGNKEY);
  EXPECT_STREQ(error.what(), "Couldn't write to the database: FOREIGN KEY constraint failed.");
  EXPECT_THROW(store.insert(folder), DatabaseError) << "its id is taken";
  EXPECT_THROW(store.insert(folderAt("/far", 1e15)), DatabaseError);
  EXPECT_EQ(store.folders().size(), 1U);
  EXPECT_TRUE(store.journalSince(Date{0}).empty());

  EXPECT_THROW(store.update(folderAt("/without an id")), RecordNotFound);
  EXPECT_THROW(store.update(entryOf(folder, "without an id")), RecordNotFound);
  store.deleteFolder(*folder.id);
  EXPECT_THROW(store.update(folder), RecordNotFound);
  for (const auto id : {folder.id, std::optional<std::int64_t>()})
    EXPECT_THROW(store.change(id, [](Folder&) {}), RecordNotFound);
}

TEST_F(StoreOnFile, aRowThatIsNotUnderstoodFailsTheWholeFetchAndOneWithOddReasonsDoesNot) {
  const Folder folder = store.insert(folderAt("/a"));
  store.insert(folderAt("/b"));
  store.insert(entryOf(folder, "x"));
  const auto mixed = [](const char* type, const char* column, const char* expected) {
    return std::string("The database holds ") + type + " in the column “" + column + "”, where " +
           expected + " is expected.";
  };
  const std::tuple<std::string, std::string, std::string> rows[] = {
      {"folder", "disposal = 'Bin'", "Unknown disposal Bin"},
      {"folder", "disposal = CAST(X'FF' AS TEXT)", "Unknown disposal \xef\xbf\xbd"},
      {"folder", "bookmark = 'text'", mixed("text", "bookmark", "binary data")},
      {"folder", "path = X'2F61'", mixed("binary data", "path", "text")},
      {"folder", "maxAgeDays = 'ten'", mixed("text", "maxAgeDays", "an integer")},
      {"folder", "sizeLimit = 1.5", mixed("a real number", "sizeLimit", "an integer")},
      {"folder", "automatic = 2", mixed("2", "automatic", "0 or 1")},
      {"folder", "lastRunAt = 'today'", "“today” isn't a date."},
      {"folder", "createdAt = 1700000000", mixed("an integer", "createdAt", "text")},
      {"journalEntry", "disposal = 'trash'", "Unknown disposal trash"},
      {"journalEntry", "reasons = '[\"Age\"]'", "Unknown rule in the reasons [\"Age\"]"},
      {"journalEntry", "reasons = '[1]'", "Unreadable reasons [1]"},
      {"journalEntry", "reasons = '\"age\"'", "Unreadable reasons \"age\""},
      {"journalEntry", "reasons = '[\"age\"'", "Unreadable reasons [\"age\""},
      {"journalEntry", "reasons = ''", "Unreadable reasons "},
      {"journalEntry", "reasons = '[\"age\"]' || char(0) || ']'", "Unreadable reasons [\"age\"]"},
      {"journalEntry", "undoneAt = ''", "“” isn't a date."},
  };
  for (const auto& [table, change, message] : rows) {
    const bool isFolder = table == "folder";
    run("CREATE TABLE kept AS SELECT * FROM " + table);
    run("UPDATE " + table + " SET " + change + " WHERE id = 1");
    const DatabaseError error = databaseErrorOf(
        [&] { isFolder ? void(store.folders()) : void(store.journalSince(Date{0})); });
    EXPECT_EQ(error.what(), message) << change;
    EXPECT_TRUE(error.code() == SQLITE_ERROR || error.code() == SQLITE_MISMATCH) << change;
    run("DELETE FROM " + table + "; INSERT INTO " + table + " SELECT * FROM kept; DROP TABLE kept");
  }
  EXPECT_EQ(store.folders().size(), 2U);
  EXPECT_EQ(store.journalSince(Date{0}).size(), 1U);

  // Reasons are a set, whatever the order and the blanks of the text.
  const RuleSet all = {Rule::age, Rule::size, Rule::automatic, Rule::emptyOnRestart};
  for (const auto& [text, reasons] :
       {std::pair{R"(["emptyOnRestart","automatic","size","age"])", all},
        {R"( [ "size" , "\u0061ge" , "size" ] )", RuleSet{Rule::age, Rule::size}},
        {"[]", RuleSet{}}}) {
    run(std::string("UPDATE journalEntry SET reasons = '") + text + "'");
    EXPECT_EQ(store.journalEntry(1)->reasons, reasons) << text;
  }
}

}  // namespace
}  // namespace tidemar::testing
