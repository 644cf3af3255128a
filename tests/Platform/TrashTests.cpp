#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "Platform/Files/Trash/PercentEncoding.h"
#include "Platform/Files/Trash/TrashName.h"
#include "support/FailingSystemCall.h"
#include "support/FileExpectations.h"
#include "support/FolderActions.h"
#include "support/ScopedEnvironment.h"
#include "support/TemporaryTree.h"

namespace tidemar {
namespace {

using namespace testing;

class TrashTest : public ::testing::Test {
 protected:
  FileURL trash(const std::string& relative) const {
    return FileURL(_home.path(".local/share/Trash/") + relative);
  }
  void expectEmptyTrash() const {
    EXPECT_TRUE(namesIn(trash("files")).empty());
    EXPECT_TRUE(namesIn(trash("info")).empty());
  }

  TemporaryDirectory _home;
  ScopedHome _environment{_home.url()};
};

TEST_F(TrashTest, TakesAnItemWithARecordThatLeadsBack) {
  const struct {
    const char* title;
    std::string name;
    std::string encoded;
  } rows[] = {
      {"a plain name", "report.txt", "report.txt"},
      {"blanks", "old report", "old%20report"},
      {"a percent sign", "100%25", "100%2525"},
      {"a hash", "a#b?c", "a%23b%3Fc"},
      {"a newline", "a\nPath=b", "a%0APath%3Db"},
      {"bytes that are no UTF-8", "caf\xE9", "caf%E9"},
      {"UTF-8", "caf\xC3\xA9", "caf%C3%A9"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    const TemporaryDirectory folder;
    const FileURL item = folder.url(row.name);
    writeFile(item, "content");
    const std::time_t before = std::time(nullptr);

    const FileURL binned = trashItem(item);

    EXPECT_EQ(binned, trash("files/" + row.name));
    EXPECT_EQ(readFile(binned), "content");
    EXPECT_FALSE(exists(item));
    const FileURL record = trash("info/" + row.name + ".trashinfo");
    const std::string text = readFile(record);
    EXPECT_TRUE(text.starts_with("[Trash Info]\nPath=")) << text;
    EXPECT_EQ(pathIn(record), folder.path() + "/" + row.encoded);
    EXPECT_EQ(percentDecoded(pathIn(record)), item.path());

    std::tm date{};
    const std::size_t start = text.find("\nDeletionDate=") + 14;
    ASSERT_NE(strptime(text.c_str() + start, "%Y-%m-%dT%H:%M:%S", &date), nullptr) << text;
    date.tm_isdst = -1;
    const std::time_t deleted = std::mktime(&date);
    EXPECT_GE(deleted, before);
    EXPECT_LE(deleted, std::time(nullptr));
    struct stat values {};
    ASSERT_EQ(lstat(record.path().c_str(), &values), 0);
    EXPECT_EQ(values.st_mode & 0777U, 0600U);
  }
}

TEST_F(TrashTest, WritesTheDateInLocalTime) {
  const ScopedEnvironment zone("TZ", "UTC-9");
  tzset();
  writeFile(_home.url("item"), "");
  const std::time_t before = std::time(nullptr);
  trashItem(_home.url("item"));
  std::tm date{};
  const std::string text = readFile(trash("info/item.trashinfo"));
  strptime(text.c_str() + text.find("Date=") + 5, "%Y-%m-%dT%H:%M:%S", &date);
  EXPECT_GE(timegm(&date) - before, 9 * 3600 - 1);
}

TEST_F(TrashTest, TakesLinksAndTreesAsTheyAre) {
  makeTree(_home.url(),
           "target/\n  kept 1\nlink -> target\ndangling -> nowhere\ntree/\n  a/\n    b 3");
  trashItem(_home.url("link"));
  trashItem(_home.url("dangling"));
  trashItem(_home.url("tree"));
  EXPECT_TRUE(std::filesystem::is_symlink(trash("files/link").path()));
  EXPECT_TRUE(std::filesystem::is_symlink(trash("files/dangling").path()));
  EXPECT_EQ(readFile(trash("files/tree/a/b")), "xxx");
  EXPECT_TRUE(exists(_home.url("target/kept")));
}

TEST_F(TrashTest, RecordsTheRealPlaceOfAnItemThatIsReachedThroughALink) {
  makeTree(_home.url(), "real/\n  item\nlink -> real");
  trashItem(_home.url("link/item"));
  EXPECT_EQ(pathIn(trash("info/item.trashinfo")), _home.path("real/item"));
}

TEST_F(TrashTest, MakesItsDirectoriesForTheUserAlone) {
  writeFile(_home.url("item"), "");
  trashItem(_home.url("item"));
  for (const char* name : {"", "files", "info"}) {
    struct stat values {};
    ASSERT_EQ(lstat(trash(name).path().c_str(), &values), 0);
    EXPECT_EQ(values.st_mode & 07777U, 0700U) << name;
  }
}

TEST_F(TrashTest, ReplacesNothingThatLiesThere) {
  makeTree(_home.url(), R"(
    .local/
      share/
        Trash/
          files/
            orphan.txt 5
          info/
            stray.txt.trashinfo 7
    orphan.txt 1
    stray.txt 1
    twice.txt 1
  )");
  EXPECT_EQ(trashItem(_home.url("orphan.txt")), trash("files/orphan.2.txt"));
  EXPECT_EQ(readFile(trash("files/orphan.txt")), "xxxxx") << "an item without a record is kept";
  EXPECT_FALSE(exists(trash("info/orphan.txt.trashinfo"))) << "and gets no record of another's";

  EXPECT_EQ(trashItem(_home.url("stray.txt")), trash("files/stray.2.txt"));
  EXPECT_EQ(readFile(trash("info/stray.txt.trashinfo")), "xxxxxxx");

  EXPECT_EQ(trashItem(_home.url("twice.txt")), trash("files/twice.txt"));
  writeFile(_home.url("twice.txt"), "second");
  EXPECT_EQ(trashItem(_home.url("twice.txt")), trash("files/twice.2.txt"));
}

TEST_F(TrashTest, FindsANameForTheHundredthOfOneName) {
  std::set<FileURL> places;
  for (int i = 0; i < 100; ++i) {
    writeFile(_home.url("same"), "");
    places.insert(trashItem(_home.url("same")));
  }
  EXPECT_EQ(places.size(), 100U);
  EXPECT_EQ(namesIn(trash("files")).size(), 100U);
  EXPECT_EQ(namesIn(trash("info")).size(), 100U);
}

TEST_F(TrashTest, CutsANameThatLeavesNoRoomForItsRecord) {
  for (const std::string& name :
       {std::string(250, 'n'), std::string(240, 'n') + ".longer", std::string(255, 'n')}) {
    for (int i = 0; i < 2; ++i) {
      writeFile(_home.url(name), "content");
      const FileURL binned = trashItem(_home.url(name));
      EXPECT_EQ(readFile(binned), "content");
      const std::string binnedName(binned.lastPathComponent());
      EXPECT_TRUE(exists(trash("info/" + binnedName + ".trashinfo")));
      EXPECT_EQ(pathIn(trash("info/" + binnedName + ".trashinfo")), _home.path(name));
    }
  }
}

TEST(TrashName, KeepsEndingsAndWholeCharacters) {
  const struct {
    const char* title;
    std::string name;
    unsigned attempt;
    std::size_t limit;
    std::string expected;
  } rows[] = {
      {"fits", "a.txt", 0, 245, "a.txt"},
      {"second with an ending", "a.tar.gz", 1, 245, "a.tar.2.gz"},
      {"second without an ending", "a", 1, 245, "a.2"},
      {"a hidden name is no ending", ".profile", 2, 245, ".profile.3"},
      {"the ending outlives the cut", std::string(100, 'a') + ".txt", 1, 64,
       std::string(58, 'a') + ".2.txt"},
      {"two-byte character at the cut", std::string(63, 'a') + "\xC3\xA9", 0, 64,
       std::string(63, 'a')},
      {"three-byte character at the cut", std::string(62, 'a') + "\xE2\x82\xAC", 0, 64,
       std::string(62, 'a')},
      {"four-byte character at the cut", std::string(61, 'a') + "\xF0\x9F\x8C\x8A", 0, 64,
       std::string(61, 'a')},
      {"character that just fits", std::string(62, 'a') + "\xC3\xA9z", 0, 64,
       std::string(62, 'a') + "\xC3\xA9"},
      {"bytes that are no UTF-8", std::string(80, '\x80'), 0, 64, std::string(64, '\x80')},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(trashName(row.name, row.attempt, row.limit), row.expected) << row.title;
  }
}

TEST_F(TrashTest, RefusesATrashThatIsNotTheUsersOwn) {
  const struct {
    const char* title;
    std::function<void(const FileURL& data)> arrange;
    int code;
  } rows[] = {
      {"the Trash is a link",
       [](const FileURL& data) { makeTree(data, "elsewhere/\nTrash -> elsewhere"); }, ELOOP},
      {"the Trash is a link to nothing",
       [](const FileURL& data) { makeTree(data, "Trash -> nowhere"); }, ELOOP},
      {"its files are a link",
       [](const FileURL& data) { makeTree(data, "Trash/\n  files -> ../elsewhere\nelsewhere/"); },
       ELOOP},
      {"its records are a link",
       [](const FileURL& data) { makeTree(data, "Trash/\n  info -> ../elsewhere\nelsewhere/"); },
       ELOOP},
      {"the Trash is a file", [](const FileURL& data) { makeTree(data, "Trash 4"); }, ENOTDIR},
      {"the Trash belongs to someone else",
       [](const FileURL& data) {
         makeTree(data, "Trash/");
         ASSERT_EQ(chown((data.path() + "/Trash").c_str(), 12345, 12345), 0);
       },
       EPERM},
      {"its files belong to someone else",
       [](const FileURL& data) {
         makeTree(data, "Trash/\n  files/");
         ASSERT_EQ(chown((data.path() + "/Trash/files").c_str(), 12345, 12345), 0);
       },
       EPERM},
  };
  if (geteuid() != 0) GTEST_SKIP() << "only root can give a Trash to someone else";
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    const TemporaryDirectory home;
    const ScopedHome environment(home.url());
    makeTree(home.url(), ".local/\n  share/\nitem 3");
    row.arrange(home.url(".local/share"));
    EXPECT_EQ(codeOf([&] { trashItem(home.url("item")); }), row.code);
    EXPECT_EQ(readFile(home.url("item")), "xxx");
    EXPECT_TRUE(namesIn(home.url(".local/share/elsewhere")).empty());
  }
}

TEST_F(TrashTest, RefusesWhatIsNoItem) {
  makeTree(_home.url(), "folder/");
  EXPECT_EQ(codeOf([&] { trashItem(_home.url("missing")); }), ENOENT);
  EXPECT_NE(codeOf([&] { trashItem(FileURL(_home.path("folder/.."))); }), 0);
  EXPECT_NE(codeOf([&] { trashItem(FileURL("/")); }), 0);
  EXPECT_NE(codeOf([&] { trashItem(FileURL()); }), 0);
  EXPECT_TRUE(exists(_home.url("folder")));
}

TEST_F(TrashTest, RefusesADirectoryThatHoldsTheTrashItself) {
  EXPECT_EQ(codeOf([&] { trashItem(_home.url(".local")); }), ENOENT);
  makeTree(_home.url(), ".local/\n  kept 1");
  EXPECT_EQ(codeOf([&] { trashItem(_home.url(".local")); }), EBUSY);
  EXPECT_TRUE(exists(_home.url(".local/kept")));
  expectEmptyTrash();
}

TEST_F(TrashTest, LeavesNoRecordOfAnItemThatStayed) {
  writeFile(_home.url("item"), "content");
  for (const int code : {EACCES, EXDEV, EIO}) {
    withFailingSystemCall(SYS_renameat2, code,
                          [&] { EXPECT_EQ(codeOf([&] { trashItem(_home.url("item")); }), code); });
    EXPECT_EQ(readFile(_home.url("item")), "content");
    expectEmptyTrash();
  }
}

TEST_F(TrashTest, ReplacesNothingWhereTheFileSystemCanNotRefuseIt) {
  makeTree(_home.url(), R"(
    .local/
      share/
        Trash/
          files/
            orphan 5
            empty/
          info/
    orphan 1
    empty/
      inner 2
    link -> orphan
  )");
  withFailingSystemCall(SYS_renameat2, EINVAL, [&] {
    EXPECT_EQ(trashItem(_home.url("link")), trash("files/link"));
    EXPECT_EQ(trashItem(_home.url("orphan")), trash("files/orphan.2"));
    EXPECT_EQ(trashItem(_home.url("empty")), trash("files/empty.2"));
  });
  EXPECT_TRUE(std::filesystem::is_symlink(trash("files/link").path()));
  EXPECT_EQ(readFile(trash("files/orphan")), "xxxxx");
  EXPECT_TRUE(namesIn(trash("files/empty")).empty());
  EXPECT_EQ(readFile(trash("files/empty.2/inner")), "xx");
  EXPECT_FALSE(exists(_home.url("orphan")));
  EXPECT_FALSE(exists(_home.url("empty")));
}

TEST_F(TrashTest, LeavesAnItemThatCanNotBeUnlinkedAlone) {
  writeFile(_home.url("item"), "content");
  withFailingSystemCall(SYS_renameat2, EINVAL, [&] {
    withFailingSystemCall(SYS_linkat, EPERM,
                          [&] { EXPECT_EQ(codeOf([&] { trashItem(_home.url("item")); }), EPERM); });
  });
  EXPECT_EQ(readFile(_home.url("item")), "content");
  expectEmptyTrash();
}

}  // namespace
}  // namespace tidemar
