#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include "TidemarKit/Store/DatabaseError.h"
#include "TidemarKit/Store/Store.h"
#include "support/RawDatabase.h"
#include "support/Records.h"
#include "support/TemporaryTree.h"

namespace tidemar {
namespace {

using namespace tidemar::testing;
using Rows = std::vector<std::string>;

struct stat statusOf(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
  return status;
}

/// The primary result code with which opening fails; none if it succeeds.
std::optional<int> failureOfOpening(const std::string& path) {
  try {
    const Store store(path);
    return std::nullopt;
  } catch (const DatabaseError& error) {
    EXPECT_TRUE(std::string_view(error.what()).starts_with("Couldn't ")) << error.what();
    EXPECT_TRUE(std::string_view(error.what()).ends_with(".")) << error.what();
    return error.code() & 0xff;
  }
}

TEST(StoreFile, aFirstOpeningMakesTheWholeSchema) {
  const TemporaryDirectory directory;
  const std::string path = directory.path("tidemar.sqlite");
  const mode_t umaskBefore = umask(0);
  { const Store store(path); }
  umask(umaskBefore);

  EXPECT_EQ(statusOf(path).st_mode & 07777, 0600U);
  EXPECT_EQ(runSQL(path,
                   "SELECT type, name, tbl_name FROM sqlite_schema"
                   " WHERE name NOT LIKE 'sqlite_%' ORDER BY name"),
            (Rows{"table|folder|folder", "table|grdb_migrations|grdb_migrations",
                  "index|index_journalEntry_on_folderID|journalEntry",
                  "index|index_journalEntry_on_performedAt|journalEntry",
                  "table|journalEntry|journalEntry"}));
  const std::string columns =
      "SELECT name, type, \"notnull\", dflt_value, pk FROM pragma_table_info('";
  EXPECT_EQ(runSQL(path, columns + "folder')"),
            (Rows{"id|INTEGER|0|NULL|1", "bookmark|BLOB|1|NULL|0", "path|TEXT|1|NULL|0",
                  "maxAgeDays|INTEGER|0|NULL|0", "sizeLimit|INTEGER|0|NULL|0",
                  "automatic|BOOLEAN|1|NULL|0", "emptyOnRestart|BOOLEAN|1|NULL|0",
                  "disposal|TEXT|1|NULL|0", "createdAt|DATETIME|1|NULL|0",
                  "lastRunAt|DATETIME|1|NULL|0"}));
  EXPECT_EQ(runSQL(path, columns + "journalEntry')"),
            (Rows{"id|INTEGER|0|NULL|1", "folderID|INTEGER|1|NULL|0", "disposal|TEXT|1|NULL|0",
                  "name|TEXT|1|NULL|0", "binnedPath|TEXT|0|NULL|0", "size|INTEGER|1|NULL|0",
                  "reasons|TEXT|1|NULL|0", "performedAt|DATETIME|1|NULL|0",
                  "undoneAt|DATETIME|0|NULL|0"}));
  EXPECT_EQ(runSQL(path, columns + "grdb_migrations')"), (Rows{"identifier|TEXT|1|NULL|1"}));
  EXPECT_EQ(runSQL(path,
                   "SELECT \"table\", \"from\", \"to\", on_update, on_delete"
                   " FROM pragma_foreign_key_list('journalEntry')"),
            (Rows{"folder|folderID|NULL|NO ACTION|CASCADE"}));
  EXPECT_EQ(runSQL(path, "SELECT name FROM pragma_index_info('index_journalEntry_on_folderID')"),
            (Rows{"folderID"}));
  EXPECT_EQ(runSQL(path, "SELECT name FROM pragma_index_info('index_journalEntry_on_performedAt')"),
            (Rows{"performedAt"}));
  EXPECT_EQ(runSQL(path, "SELECT identifier FROM grdb_migrations"),
            (Rows{"temporary folders and journal"}));
  EXPECT_EQ(runSQL(path, "PRAGMA journal_mode"), (Rows{"delete"}));
  EXPECT_EQ(runSQL(path, "SELECT count(*) FROM sqlite_schema WHERE sql LIKE '%AUTOINCREMENT%'"),
            (Rows{"2"}));
}

TEST(StoreFile, aSecondOpeningChangesNothing) {
  const TemporaryDirectory directory;
  const std::string path = directory.path("tidemar.sqlite");
  { Store(path).insert(Folder()); }
  const std::string content = readFile(FileURL(path));
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  EXPECT_EQ(Store(path).folders().size(), 1U);
  EXPECT_EQ(readFile(FileURL(path)), content);
  EXPECT_EQ(statusOf(path).st_mode & 07777, 0640U);
}

TEST(StoreFile, anEmptyFileAndANameThatMeansMemoryToSQLiteBecomeDatabases) {
  const TemporaryDirectory directory;
  writeFile(directory.url("empty"), "");
  EXPECT_EQ(failureOfOpening(directory.path("empty")), std::nullopt);

  const std::string before = std::filesystem::current_path().string();
  ASSERT_EQ(chdir(directory.path().c_str()), 0);
  { Store(std::string(":memory:")).insert(Folder()); }
  EXPECT_EQ(Store(std::string(":memory:")).folders().size(), 1U);
  ASSERT_EQ(chdir(before.c_str()), 0);
  EXPECT_TRUE(exists(directory.url(":memory:")));
}

TEST(StoreFile, aFileThatCannotBeUsedIsRefusedAndStaysAsItIs) {
  const TemporaryDirectory directory;
  makeTree(directory.url(), R"(
    directory/
    dangling -> nowhere/at/all
  )");
  { const Store store(directory.path("whole")); }
  const std::string whole = readFile(directory.url("whole"));
  std::string damaged = whole;
  damaged.replace(100, 400, 400, '\xff');
  const struct {
    const char* name;
    std::string content;
    int code;
  } files[] = {
      {"text", std::string(5000, 't'), SQLITE_NOTADB},
      {"a short text", "notes", SQLITE_NOTADB},
      {"a database with a damaged schema", damaged, SQLITE_CORRUPT},
      {"the first page of a longer database", whole.substr(0, 4096), SQLITE_CORRUPT},
  };
  for (const auto& file : files) {
    const FileURL url = directory.url(file.name);
    writeFile(url, file.content);
    EXPECT_EQ(failureOfOpening(url.path()), file.code) << file.name;
    EXPECT_EQ(readFile(url), file.content) << file.name;
  }

  EXPECT_EQ(failureOfOpening(directory.path("directory")), SQLITE_CANTOPEN);
  EXPECT_EQ(failureOfOpening(directory.path("missing/tidemar.sqlite")), SQLITE_CANTOPEN);
  EXPECT_EQ(failureOfOpening(directory.path("dangling")), SQLITE_CANTOPEN);
  EXPECT_EQ(failureOfOpening(""), SQLITE_CANTOPEN);
  EXPECT_EQ(failureOfOpening(directory.path("cut") + '\0' + "off"), SQLITE_CANTOPEN);
  EXPECT_FALSE(exists(directory.url("cut")));
}

/// An ordinary user for one scope, since nothing is read-only for root.
class OrdinaryUser {
 public:
  OrdinaryUser() : _user(geteuid()) {
    if (_user == 0) {
      EXPECT_EQ(seteuid(65534), 0);
    }
  }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;
  ~OrdinaryUser() { EXPECT_EQ(seteuid(_user), 0); }

 private:
  uid_t _user;
};

TEST(StoreFile, aFileOrDirectoryThatCannotBeWrittenIsRefusedAtOnce) {
  const OrdinaryUser user;
  const TemporaryDirectory directory;
  const std::string path = directory.path("tidemar.sqlite");
  { const Store store(path); }

  ASSERT_EQ(chmod(path.c_str(), 0400), 0);
  EXPECT_EQ(failureOfOpening(path), SQLITE_READONLY);
  ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  ASSERT_EQ(chmod(directory.path().c_str(), 0500), 0);
  EXPECT_EQ(failureOfOpening(path), SQLITE_READONLY);
  EXPECT_EQ(failureOfOpening(directory.path("new.sqlite")), SQLITE_CANTOPEN);
  ASSERT_EQ(chmod(directory.path().c_str(), 0700), 0);
  EXPECT_EQ(failureOfOpening(path), std::nullopt);
}

TEST(StoreFile, aLockOfAnotherProgramIsWaitedForAsLongAsTheStoreHasPatience) {
  const TemporaryDirectory directory;
  const std::string path = directory.path("tidemar.sqlite");
  constexpr auto patience = std::chrono::milliseconds(120);
  Store store(path, patience);
  OtherProgram other(path);
  other.run("BEGIN EXCLUSIVE");
  const auto begin = std::chrono::steady_clock::now();
  try {
    store.insert(Folder());
    ADD_FAILURE() << "wrote past a lock";
  } catch (const DatabaseError& error) {
    EXPECT_EQ(error.code(), SQLITE_BUSY);
    EXPECT_EQ(error.what(), "Couldn't write to the database “" + path + "”: database is locked.");
  }
  EXPECT_GE(std::chrono::steady_clock::now() - begin, patience);
  EXPECT_THROW(store.folders(), DatabaseError);
  other.run("COMMIT");
  EXPECT_TRUE(store.folders().empty());
}

TEST(StoreFile, aFileOfALaterVersionIsUsedAsFarAsItsTablesTakeOurRows) {
  const TemporaryDirectory directory;
  const std::string path = directory.path("tidemar.sqlite");
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

}  // namespace
}  // namespace tidemar
