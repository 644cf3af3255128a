#include <ctime>

#include "Platform/Files/Trash/PercentEncoding.h"
#include "Platform/Files/Trash/TrashName.h"
#include "Platform/Files/Trash/TrashRecord.h"
#include "Platform/FolderAndBin.h"

namespace tidemar::testing {
namespace {

using namespace std::string_literals;

class TrashTest : public FolderAndBin {
 protected:
  /// The code of the error that moving an item to the Bin ends in, 0 for none.
  static int trashCode(const FileURL& item) {
    return codeOf([&] { trashItem(item); });
  }

  void expectEmptyTrash() const {
    EXPECT_TRUE(namesIn(bin("files")).empty() && namesIn(bin("info")).empty());
  }
};

TEST_F(TrashTest, TakesAnItemWithARecordThatLeadsBack) {
  const ScopedEnvironment zone("TZ", "UTC-9");
  const std::pair<std::string, std::string> rows[] = {
      {"AZaz09-._~", "AZaz09-._~"}, {"old report", "old%20report"}, {"100%25", "100%2525"},
      {"a#b?c", "a%23b%3Fc"},       {"a\nPath=b", "a%0APath%3Db"},  {"caf\xE9", "caf%E9"},
      {"caf\xC3\xA9", "caf%C3%A9"},
  };
  for (const auto& [name, encoded] : rows) {
    SCOPED_TRACE(encoded);
    writeFile(folder(name), "content");
    const std::time_t before = std::time(nullptr);
    EXPECT_EQ(trashItem(folder(name)), bin("files/" + name));
    EXPECT_EQ(readFile(bin("files/" + name)), "content");
    EXPECT_FALSE(exists(folder(name)));

    const FileURL record = bin("info/" + name + ".trashinfo");
    EXPECT_EQ(permissionsOf(record), Permissions(0600));
    const std::string text = readFile(record);
    const std::string start =
        "[Trash Info]\nPath=" + _folder.path() + "/" + encoded + "\nDeletionDate=";
    ASSERT_TRUE(text.starts_with(start)) << text;
    std::tm date{};
    EXPECT_STREQ(strptime(text.c_str() + start.size(), "%Y-%m-%dT%H:%M:%S", &date), "\n");
    constexpr std::time_t east = 9 * 3600;
    EXPECT_GE(timegm(&date), before + east) << "local time";
    EXPECT_LE(timegm(&date), std::time(nullptr) + east);
  }
}

TEST_F(TrashTest, TakesLinksAndTreesAsTheyAreIntoDirectoriesForTheUserAlone) {
  makeTree(folder(""),
           "kept/\n  file 1\nlink -> kept\ndangling -> nowhere\ntree/\n  a/\n    b 3\nitem 1");
  makeTree(_home.url(), "way -> folder");
  for (const char* name : {"link", "dangling", "tree"})
    trashItem(folder(name));
  EXPECT_TRUE(std::filesystem::is_symlink(bin("files/link").path()));
  EXPECT_TRUE(std::filesystem::is_symlink(bin("files/dangling").path()));
  EXPECT_EQ(readFile(bin("files/tree/a/b")), "xxx");
  EXPECT_TRUE(exists(folder("kept/file")));
  for (const char* name : {"", "files", "info"})
    EXPECT_EQ(permissionsOf(bin(name)), Permissions(0700)) << name;

  trashItem(home("way/item"));
  EXPECT_EQ(pathIn(bin("info/item.trashinfo")), folder("item").path());
}

TEST_F(TrashTest, ReplacesNothingThatLiesThere) {
  const auto takeAll = [&] {
    makeTree(folder(""), "orphan.txt 1\nstray.txt 1\ntwice.txt 1\nempty/\n  inner 2\nlink -> kept");
    std::filesystem::create_directories(bin("files/empty").path());
    std::filesystem::create_directories(bin("info").path());
    makeTree(bin("files"), "orphan.txt 5");
    makeTree(bin("info"), "stray.txt.trashinfo 7");

    EXPECT_EQ(trashItem(folder("orphan.txt")), bin("files/orphan.2.txt"));
    EXPECT_EQ(readFile(bin("files/orphan.txt")), "xxxxx") << "an item without a record is kept";
    EXPECT_FALSE(exists(bin("info/orphan.txt.trashinfo"))) << "and gets no record of another's";
    EXPECT_EQ(trashItem(folder("stray.txt")), bin("files/stray.2.txt"));
    EXPECT_EQ(readFile(bin("info/stray.txt.trashinfo")), "xxxxxxx");
    EXPECT_EQ(trashItem(folder("twice.txt")), bin("files/twice.txt"));
    writeFile(folder("twice.txt"), "second");
    EXPECT_EQ(trashItem(folder("twice.txt")), bin("files/twice.2.txt"));
    EXPECT_EQ(trashItem(folder("empty")), bin("files/empty.2"));
    EXPECT_TRUE(namesIn(bin("files/empty")).empty());
    EXPECT_EQ(readFile(bin("files/empty.2/inner")), "xx");
    EXPECT_EQ(trashItem(folder("link")), bin("files/link"));
    EXPECT_TRUE(std::filesystem::is_symlink(bin("files/link").path()));
    EXPECT_TRUE(namesIn(folder("")).empty());
    erase(bin(""));
  };
  takeAll();
  withFailingSystemCall(SYS_renameat2, EINVAL, takeAll);  // It can't refuse to replace.
}

TEST_F(TrashTest, FindsANameForTheHundredthOfOneName) {
  for (int i = 0; i < 100; ++i) {
    writeFile(folder("same"), "");
    trashItem(folder("same"));
  }
  EXPECT_EQ(namesIn(bin("files")).size(), 100U);
  EXPECT_EQ(namesIn(bin("info")).size(), 100U);
}

TEST(TrashName, KeepsEndingsAndWholeCharacters) {
  const std::string sixty(60, 'a');
  const std::tuple<std::string, unsigned, std::string> rows[] = {
      {"a.txt", 0, "a.txt"},
      {"a.tar.gz", 1, "a.tar.2.gz"},
      {"a", 1, "a.2"},
      {".profile", 2, ".profile.3"},
      {sixty + "." + sixty.substr(37), 0, sixty.substr(20) + "." + sixty.substr(37)},
      {sixty + "." + sixty.substr(36), 0, sixty + "." + sixty.substr(57)},
      {sixty + "aaaaa.txt", 1, sixty.substr(2) + ".2.txt"},
      {sixty + "aaa\xC3\xA9", 0, sixty + "aaa"},
      {sixty + "aa\xE2\x82\xAC", 0, sixty + "aa"},
      {sixty + "a\xF0\x9F\x8C\x8A", 0, sixty + "a"},
      {sixty + "aa\xC3\xA9z", 0, sixty + "aa\xC3\xA9"},
      {std::string(80, '\x80'), 0, std::string(64, '\x80')},
  };
  for (const auto& [name, attempt, expected] : rows)
    EXPECT_EQ(trashName(name, attempt, 64), expected);
}

TEST_F(TrashTest, RefusesATrashThatIsNotTheUsersOwn) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give a Trash to someone else";
  const std::pair<const char*, int> rows[] = {
      {"ln -s elsewhere Trash", ELOOP},
      {"ln -s nowhere Trash", ELOOP},
      {"mkdir Trash; ln -s ../elsewhere Trash/files", ELOOP},
      {"mkdir Trash; ln -s ../elsewhere Trash/info", ELOOP},
      {"touch Trash", ENOTDIR},
      {"mkdir Trash; chown 12345 Trash", EPERM},
      {"mkdir -p Trash/files; chown 12345 Trash/files", EPERM},
  };
  makeTree(_home.url(), ".local/\n  share/\n    elsewhere/");
  makeTree(folder(""), "item 3");
  for (const auto& [command, code] : rows) {
    SCOPED_TRACE(command);
    erase(bin(""));
    runIn(home(".local/share"), command);
    EXPECT_EQ(trashCode(folder("item")), code);
    EXPECT_EQ(readFile(folder("item")), "xxx");
    EXPECT_TRUE(namesIn(home(".local/share/elsewhere")).empty());
  }
}

TEST_F(TrashTest, LeavesNoRecordOfAnItemThatStayed) {
  writeFile(folder("item"), "content");
  for (const int code : {EACCES, EXDEV, EIO}) {
    withFailingSystemCall(SYS_renameat2, code, [&] { EXPECT_EQ(trashCode(folder("item")), code); });
    expectEmptyTrash();
  }
  withFailingSystemCall(SYS_renameat2, EINVAL, [&] {
    withFailingSystemCall(SYS_linkat, EPERM, [&] { EXPECT_EQ(trashCode(folder("item")), EPERM); });
  });
  EXPECT_EQ(readFile(folder("item")), "content");
  expectEmptyTrash();

  EXPECT_EQ(trashCode(home(".local")), EBUSY) << "it holds the Bin itself";
  EXPECT_TRUE(exists(bin("files")));
  expectEmptyTrash();
}

TEST_F(TrashTest, TakesNothingIntoOneThatIsMovedAwayWhileItIsOpened) {
  int refusals = 0;
  for (int number = 1; number <= 6; ++number) {
    SCOPED_TRACE(number);
    erase(home("aside"));
    erase(bin(""));
    for (const char* part : {"files", "info"})
      std::filesystem::create_directories(bin(part).path());
    writeFile(folder("item"), "content");
    const auto moveAway = [&](int call) {
      if (call == number) std::filesystem::rename(bin("").path(), home("aside").path());
    };
    int code = 0;
    FileURL place = folder("item");
    withActionBefore(SYS_readlink, moveAway,
                     [&] { code = codeOf([&] { place = trashItem(folder("item")); }); });
    EXPECT_TRUE(code == 0 || code == ESTALE) << code;
    EXPECT_EQ(place, code == 0 ? bin("files/item") : folder("item"));
    EXPECT_TRUE(exists(place));
    refusals += code == ESTALE ? 1 : 0;
  }
  EXPECT_GT(refusals, 0);
}

TEST_F(TrashTest, OfADriveLiesAtItsTopWithPathsFromThereAndInNobodyElsesHands) {
  if (!mountDrive(TestFileSystem::Type::tmpfs)) GTEST_SKIP() << _drive->reason();
  const std::string own = ".Trash-" + user;
  const std::string shared = ".Trash/" + user;
  const std::string sticky = "mkdir .Trash; chmod 1777 .Trash";
  // A command of the shell, the Trash that is used then, if any, and the code of the error.
  const std::tuple<std::string, std::string, int> rows[] = {
      {"true", own, 0},
      {sticky, shared, 0},
      {"mkdir .Trash; chmod 777 .Trash", own, 0},
      {"chmod 1777 other; ln -s other .Trash", own, 0},
      {sticky + "; ln -s ../other " + shared, own, 0},
      {sticky + "; mkdir " + shared + "; chown 12345 " + shared, own, 0},
      {"ln -s other " + own, "", ELOOP},
      {"mkdir " + own + "; chown 12345 " + own, "", EPERM},
  };
  for (const auto& [command, trash, code] : rows) {
    SCOPED_TRACE(command);
    for (const std::string& name : namesIn(drive("")))
      erase(drive(name));
    makeTree(drive(""), "folder/\nother/");
    runIn(drive(""), command);
    makeTree(folder(""), "\"a b\" 3");
    EXPECT_EQ(trashCode(folder("a b")), code);
    if (trash.empty()) {
      EXPECT_EQ(readFile(folder("a b")), "xxx");
      EXPECT_TRUE(namesIn(drive(own)).empty());
    } else {
      EXPECT_EQ(readFile(drive(trash + "/files/a b")), "xxx");
      EXPECT_EQ(pathIn(drive(trash + "/info/a b.trashinfo")), "folder/a%20b");
      EXPECT_EQ(permissionsOf(drive(trash)), Permissions(0700));
    }
    EXPECT_TRUE(namesIn(drive("other")).empty());
    EXPECT_FALSE(exists(home(".local"))) << "the home Trash has no part in this";
  }
}

TEST_F(TrashTest, UsesTheMountsOwnTrashWhereTheHomesIsOnTheSameDeviceButOutOfReach) {
  makeTree(_home.url(), "source/\n  item 3\nplace/");
  const BindMount mount(home("source"), home("place"));
  if (!mount.isMounted()) GTEST_SKIP() << mount.reason();
  EXPECT_EQ(trashItem(home("place/item")), home("place/.Trash-" + user + "/files/item"));
  expectEmptyTrash();
}

TEST(TrashRecord, HoldsAPathAloneWhereItIsWellFormed) {
  const std::string date = "DeletionDate=2025-11-21T22:11:35\n";
  const std::pair<std::string, const char*> rows[] = {
      {"[Trash Info]\n" + date + "Path=/a\n", "/a"},
      {"[Trash Info]\nPath=/a\nPath=/b\n" + date, "/a"},
      {"[Trash Info]\n# Path\nXPath=/b\n\n Path=/c\nPath=/a\n" + date + "[Next]\nPath=/b\n", "/a"},
      {"[Trash Info]\nPath=/%c3%a9\n" + date, "/\xC3\xA9"},
      {"[Trash Info]\nPath=/a!$&'()*+,:;=@\n" + date, "/a!$&'()*+,:;=@"},
  };
  for (const auto& [text, path] : rows)
    EXPECT_EQ(pathInTrashRecord(text), path) << text;
  for (const char* path : {"", "/a%2", "/a b", "/caf\xE9", "/a%00b", "a/../../b", "/a/%2E%2e"})
    EXPECT_EQ(pathInTrashRecord("[Trash Info]\nPath=" + std::string(path) + "\n" + date),
              std::nullopt)
        << path;
  for (const std::string& text : {
           std::string(),
           "[Other]\n[Trash Info]\nPath=/a\n" + date,
           "[Trash Info] \nPath=/a\n" + date,
           "[Trash Info]\r\nPath=/a\r\n" + date,
           "[Trash Info]\n" + date + "[Next]\nPath=/a\n",
           "[Trash Info]\nPath=/a\n[Next]\n" + date,
           "[Trash Info]\nPath=/a\n"s,
           "[Trash Info]\nPath=/a\nDeletionDate=2025-11-21\n"s,
           "[Trash Info]\nPath=/a\nDeletionDate=2025-11-2xT22:11:35\n"s,
       })
    EXPECT_EQ(pathInTrashRecord(text), std::nullopt) << text;
}

}  // namespace
}  // namespace tidemar::testing
