#include "TidemarKit/Store/LedgerWorld.h"

namespace tidemar::testing {
namespace {

/// The primary result code with which opening fails; none if it succeeds.
std::optional<int> failureOfOpening(const std::string& path) {
  return databaseCodeOf([&] { const Store store(path); });
}

class StoreFile : public ::testing::Test {
 protected:
  const TemporaryDirectory directory;
  const std::string path = directory.path("tidemar.sqlite");
};

TEST_F(StoreFile, aFirstOpeningMakesTheWholeSchemaAndASecondOneChangesNothing) {
  const mode_t umaskBefore = umask(0);
  { Store(path).insert(Folder()); }
  umask(umaskBefore);
  EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0600));
  // Everything that other programs and later versions rely on.
  EXPECT_EQ(runSQL(path,
                   "SELECT type, name, tbl_name FROM sqlite_schema"
                   " WHERE name NOT LIKE 'sqlite_%' ORDER BY name"),
            (Rows{"table|folder|folder", "table|grdb_migrations|grdb_migrations",
                  "index|index_journalEntry_on_folderID|journalEntry",
                  "index|index_journalEntry_on_performedAt|journalEntry",
                  "table|journalEntry|journalEntry"}));
  const std::string about = "SELECT name, type, \"notnull\", dflt_value, pk FROM pragma_table_info";
  EXPECT_EQ(runSQL(path, about + "('folder')"),
            (Rows{"id|INTEGER|0|NULL|1", "bookmark|BLOB|1|NULL|0", "path|TEXT|1|NULL|0",
                  "maxAgeDays|INTEGER|0|NULL|0", "sizeLimit|INTEGER|0|NULL|0",
                  "automatic|BOOLEAN|1|NULL|0", "emptyOnRestart|BOOLEAN|1|NULL|0",
                  "disposal|TEXT|1|NULL|0", "createdAt|DATETIME|1|NULL|0",
                  "lastRunAt|DATETIME|1|NULL|0"}));
  EXPECT_EQ(runSQL(path, about + "('journalEntry')"),
            (Rows{"id|INTEGER|0|NULL|1", "folderID|INTEGER|1|NULL|0", "disposal|TEXT|1|NULL|0",
                  "name|TEXT|1|NULL|0", "binnedPath|TEXT|0|NULL|0", "size|INTEGER|1|NULL|0",
                  "reasons|TEXT|1|NULL|0", "performedAt|DATETIME|1|NULL|0",
                  "undoneAt|DATETIME|0|NULL|0"}));
  EXPECT_EQ(runSQL(path, "SELECT identifier FROM grdb_migrations; PRAGMA journal_mode"),
            (Rows{"temporary folders and journal", "delete"}));

  const std::string content = readFile(FileURL(path));
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  EXPECT_EQ(Store(path).folders().size(), 1U);
  EXPECT_EQ(readFile(FileURL(path)), content);
  EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0640));
}

TEST_F(StoreFile, anEmptyFileAndANameThatMeansMemoryToSQLiteBecomeDatabases) {
  writeFile(directory.url("empty"), "");
  EXPECT_EQ(failureOfOpening(directory.path("empty")), std::nullopt);
  const std::string before = std::filesystem::current_path().string();
  ASSERT_EQ(chdir(directory.path().c_str()), 0);
  { Store(std::string(":memory:")).insert(Folder()); }
  EXPECT_EQ(Store(std::string(":memory:")).folders().size(), 1U);
  ASSERT_EQ(chdir(before.c_str()), 0);
  EXPECT_TRUE(exists(directory.url(":memory:")));
}

TEST_F(StoreFile, aFileThatCannotBeUsedIsRefusedAndStaysAsItIs) {
  makeTree(directory.url(), "directory/\ndangling -> nowhere/at/all");
  { const Store store(path); }
  const std::string whole = readFile(FileURL(path));
  std::string damaged = whole;
  damaged.replace(100, 400, 400, '\xff');
  const std::pair<std::string, int> contents[] = {
      {std::string(5000, 't'), SQLITE_NOTADB},
      {"notes", SQLITE_NOTADB},
      {damaged, SQLITE_CORRUPT},
      {whole.substr(0, 4096), SQLITE_CORRUPT},
  };
  for (const auto& [content, code] : contents) {
    writeFile(directory.url("file"), content);
    EXPECT_EQ(failureOfOpening(directory.path("file")), code);
    EXPECT_EQ(readFile(directory.url("file")), content);
  }
  for (const char* name : {"directory", "missing/tidemar.sqlite", "dangling"})
    EXPECT_EQ(failureOfOpening(directory.path(name)), SQLITE_CANTOPEN) << name;
  EXPECT_EQ(failureOfOpening(""), SQLITE_CANTOPEN);
  EXPECT_EQ(failureOfOpening(directory.path("cut") + '\0' + "off"), SQLITE_CANTOPEN);
  EXPECT_FALSE(exists(directory.url("cut")));

  asOrdinaryUser(directory.url(), [&] {
    ASSERT_EQ(chmod(path.c_str(), 0400), 0);
    EXPECT_EQ(failureOfOpening(path), SQLITE_READONLY);
    ASSERT_EQ(chmod(path.c_str(), 0600), 0);
    ASSERT_EQ(chmod(directory.path().c_str(), 0500), 0);
    EXPECT_EQ(failureOfOpening(path), SQLITE_READONLY);
    EXPECT_EQ(failureOfOpening(directory.path("new.sqlite")), SQLITE_CANTOPEN);
    ASSERT_EQ(chmod(directory.path().c_str(), 0700), 0);
    EXPECT_EQ(failureOfOpening(path), std::nullopt);
  });
}

TEST_F(StoreFile, aLockIsWaitedForWithPatienceAndOfARefusedFileOperationTheSystemsReasonIsTold) {
  constexpr auto patience = std::chrono::milliseconds(120);
  Store store(path, patience);
  OtherProgram other(path);
  other.run("BEGIN EXCLUSIVE");
  const auto begin = std::chrono::steady_clock::now();
  const auto insert = [&] { store.insert(JournalEntry()); };
  const DatabaseError error = databaseErrorOf(insert);
  EXPECT_EQ(error.code(), SQLITE_BUSY);
  EXPECT_EQ(error.what(), "Couldn't write to the database “" + path + "”: database is locked.");
  EXPECT_GE(std::chrono::steady_clock::now() - begin, patience);
  EXPECT_THROW(store.folders(), DatabaseError);
  other.run("COMMIT");
  EXPECT_TRUE(store.folders().empty());

  makeTree(directory.url(), "tidemar.sqlite-journal/");
  EXPECT_TRUE(std::string(databaseErrorOf(insert).what()).ends_with(" (Is a directory)."));
  rmdir(directory.path("tidemar.sqlite-journal").c_str());
  EXPECT_TRUE(std::string(databaseErrorOf(insert).what()).ends_with("constraint failed."));
}

TEST_F(StoreFile, aFileOfALaterVersionIsUsedAsFarAsItsTablesTakeOurRows) {
  Folder folder = Store(path).insert(folderAt("/a"));
  runSQL(path,
         "INSERT INTO grdb_migrations VALUES ('colours'); ALTER TABLE folder ADD COLUMN colour;"
         "ALTER TABLE journalEntry ADD COLUMN colour DEFAULT 'red'; CREATE TABLE colours (x);");
  Store store(path);
  EXPECT_EQ(store.folders(), std::vector{folder});
  const JournalEntry entry = store.insert(entryOf(folder, "x"));
  EXPECT_EQ(store.journalSince(Date{0}), std::vector{entry});
  EXPECT_EQ(runSQL(path, "SELECT identifier FROM grdb_migrations ORDER BY rowid"),
            (Rows{"temporary folders and journal", "colours"}));
}

TEST_F(StoreFile, aDamagedOneIsReadOrRefusedAndNeverChanged) {
  const FileURL file(path);
  Folder folder;
  {
    Store store(directory.path("whole"));
    for (int i = 0; i < 20; ++i)
      folder = store.insert(folderAt("/f" + std::to_string(i)));
    for (int i = 0; i < 120; ++i)
      store.insert(entryOf(folder, "item " + std::to_string(i), i));
  }
  const std::string whole = readFile(directory.url("whole"));
  int readCount = 0;
  for (unsigned seed = 0; seed < 60; ++seed) {
    std::mt19937 random(seed);
    std::string content = whole;
    if (seed % 4 == 0) content.resize(1 + random() % whole.size());
    // Half of the bits near the beginning, where the header and the schema are.
    const std::size_t end = std::min(content.size(), seed % 2 == 0 ? whole.size() : 1024);
    for (std::size_t flips = random() % 20; flips > 0; --flips)
      content[random() % end] ^= static_cast<char>(1U << random() % 8);
    writeFile(file, content);
    try {
      Store store(file.path());
      store.journalOfFolder(*folder.id);
      store.journalSince(Date{60});
      store.tryInsert(entryOf(folder, "x"));
      store.folders();
      ++readCount;
    } catch (const DatabaseError&) {
      // Refused: as good an end as any other.
    }
    EXPECT_EQ(readFile(file), content) << seed;
  }
  EXPECT_GT(readCount, 3) << "or the damage is not worth its name";
  EXPECT_LT(readCount, 57);
}

}  // namespace
}  // namespace tidemar::testing
