#include "Platform/Files/Trash/PercentEncoding.h"
#include "Platform/FolderAndBin.h"

namespace tidemar::testing {
namespace {

using BinnedItemTest = FolderAndBin;

TEST_F(BinnedItemTest, BelievesNoPlaceButOneInTheTrashOfThisUser) {
  std::filesystem::create_directories(home(".local/share").path());
  EXPECT_FALSE(knows(bin("files/item")));
  EXPECT_FALSE(exists(bin(""))) << "none is made to look into it";
  const std::string item = folder("item").path();
  const FileURL real = lay(bin(""), "item", item);
  const std::string files = bin("files").path();
  std::filesystem::create_symlink(home(".local").path(), home("link").path());
  std::filesystem::create_directories(files + "/tree");
  move(lay(bin(""), "deep", item), bin("files/tree/deep"));
  lay(bin(""), "gone", item);
  std::filesystem::copy(bin("info/item.trashinfo").path(), bin("info/...trashinfo").path());
  std::filesystem::copy(bin("info/item.trashinfo").path(), bin("info/..trashinfo").path());
  erase(bin("files/gone"));

  EXPECT_TRUE(knows(real));
  EXPECT_TRUE(knows(home("link/share/Trash/files/item"))) << "by way of a link";
  const std::pair<const char*, FileURL> rows[] = {
      {"no path", FileURL()},
      {"a relative path", FileURL(real.path().substr(1))},
      {"a way up and down again", FileURL(files + "/../../Trash/files/item")},
      {"a path that is cut off", FileURL(real.path() + std::string("\0", 1))},
      {"a path whose beginning leads there",
       FileURL(files + std::string("\0", 1) + "/Trash/files/item")},
      {"the directory above", FileURL(files + "/..")},
      {"the directory itself", FileURL(files + "/.")},
      {"the Trash's own directory", bin("files")},
      {"a record", (lay(bin(""), "item.trashinfo", item), bin("info/item.trashinfo"))},
      {"what has gone", bin("files/gone")},
      {"a name that is too long for anything", bin("files/" + std::string(256, 'x'))},
      {"deeper in an item", bin("files/tree/deep")},
      {"a document", lay(home("Documents"), "item", item)},
      {"beside the database", lay(home(".local/share/Tidemar"), "tidemar.sqlite", item)},
      {"another directory of that name", lay(home("Trash"), "item", item)},
      {"a drive's Trash that isn't at the top", lay(home(".Trash-" + user), "item", item)},
      {"a shared Trash that isn't at the top", lay(home(".Trash/" + user), "item", item)},
  };
  setMode(home(".Trash"), 01777);
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path("/");
  for (const auto& [title, place] : rows)
    EXPECT_FALSE(knows(place)) << title;
  std::filesystem::current_path(before);
}

TEST_F(BinnedItemTest, BelievesNoTrashOfADriveThatSomeoneElseCouldArrange) {
  if (!mountDrive(TestFileSystem::Type::tmpfs)) GTEST_SKIP() << _drive->reason();
  const std::string own = ".Trash-" + user;
  const std::string shared = ".Trash/" + user;
  // A Trash, a command of the shell at the top of the drive, where $T is the Trash, and whether an
  // item is known there then.
  const std::tuple<std::string, std::string, bool> rows[] = {
      {own, "true", true},
      {own, "mv $T other; ln -s other $T", false},
      {own, "chown 77 $T", false},
      {own, "mv $T/files other; ln -s ../other/files $T/files", false},
      {own, "chown 77 $T/files", false},
      {own, "mv $T/info other; ln -s ../other/info $T/info", false},
      {own, "mv $T/info other", false},
      {own + "7", "true", false},
      {"directory/" + own, "true", false},
      {shared, "chmod 1777 .Trash", true},
      {shared, "true", false},
      {shared, "chmod 1777 .Trash; mv .Trash other/shared; ln -s other/shared .Trash", false},
      {shared, "chmod 1777 .Trash; chown 77 $T", false},
      {shared + "7", "chmod 1777 .Trash", false},
  };
  for (const auto& [trash, command, isKnown] : rows) {
    SCOPED_TRACE(trash + ": " + command);
    for (const std::string& name : namesIn(drive("")))
      erase(drive(name));
    makeTree(drive(""), "folder/\nother/\n  folder/");
    const FileURL place = lay(drive(trash), "item", "folder/item");
    runIn(drive(""), "T=" + trash + "; " + command);
    EXPECT_EQ(knows(place), isKnown);
    EXPECT_FALSE(knows(drive(trash + "/info/item"))) << "beside the items";
    if (!isKnown) continue;
    for (const char* elsewhere : {"other/folder/item", "item"})
      EXPECT_FALSE(knows(lay(drive(trash), "item", elsewhere))) << "not from there";
  }
}

TEST_F(BinnedItemTest, BelievesOnlyARecordThatNamesTheItemAndTheFolder) {
  makeTree(_home.url(), "other/\ndocument\nalias -> folder");
  const FileURL place = lay(bin(""), "binned", "");
  const auto path = [&](const std::string& relative) { return home(relative).path(); };

  const struct {
    const char* title;
    std::string recordedPath;
    bool isKnown = false;
    std::string name = "item";
  } rows[] = {
      {"from this folder", path("folder/item"), true},
      {"from this folder by way of a link", path("alias/item"), true},
      {"from a place where nothing lies any more", path("gone/item"), true},
      {"from below a place that isn't a directory", path("document/folder/item"), true},
      {"from another folder", path("other/item")},
      {"from a place where a document lies", path("document/item")},
      {"from the directory above", path("item")},
      {"under another name", path("folder/items")},
      {"under the name in the Bin", path("folder/binned")},
      {"a relative path, which starts beside the Trash", "Trash/item"},
      {"up again", path("folder/x/../item")},
      {"the folder itself", path("folder"), false, "folder"},
      {"no path", ""},
      {"escapes in escapes", path("folder/50%2525%0A"), true, "50%25\n"},
      {"an escaped escape is no escape", path("folder/%2569tem")},
      {"a cut-off name", path("folder/item%00")},
      {"a slash in the name", path("folder/a%2Fb"), false, "a/b"},
      {"nothing but bytes", path("folder/%FF%01"), true, "\xFF\x01"},
      {"a name that leads up", path("folder/.."), false, ".."},
      {"a name that leads nowhere", path("folder/."), false, "."},
      {"no name", path("folder/"), false, ""},
      {"a name of another's", path("folder/item"), false, "../folder/item"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    lay(bin(""), "binned", row.recordedPath);
    EXPECT_EQ(knows(place, row.name), row.isKnown);
  }

  lay(bin(""), "binned", path("folder/item"));
  for (const char* spoilt :  // $R is the record, ../good what it was.
       {"true", "touch $R", "ln -s ../good $R", "mkdir $R", "mkfifo $R", "head -c 40 ../good > $R",
        "cat ../good > $R; yes '' | head -c 1048576 >> $R"}) {
    runIn(bin("info"), std::string("R=binned.trashinfo; ln -f $R ../good; rm $R; ") + spoilt);
    EXPECT_FALSE(knows(place)) << spoilt;
    runIn(bin("info"), "rm -rf *; cp ../good binned.trashinfo");
  }
}

TEST_F(BinnedItemTest, TellsWhatItCannotReadFromWhatIsNotThere) {
  const FileURL place = layItem();
  for (const long call : {SYS_read, SYS_statx}) {
    withFailingSystemCall(call, EIO, [&] { EXPECT_NE(codeOf([&] { knows(place); }), 0); });
  }
  const auto opened = open();
  move(folder(""), bin("files/folder"));
  EXPECT_EQ(codeOf([&] { opened->binnedItem(place, "item"); }), ENOENT) << "in the Bin itself";
}

using PutBackTest = FolderAndBin;

/// As it is, and where the file system can't refuse to replace.
void bothWays(const std::function<void()>& body) {
  body();
  withFailingSystemCall(SYS_renameat2, EINVAL, body);
}

TEST_F(PutBackTest, BringsAnItemBackUnderItsNameAndTakesWhatTheBinKnewOfIt) {
  for (const std::string& name : {std::string("a % #\n\xFF"), std::string(255, 'x')}) {
    bothWays([&] {
      writeFile(folder(name), "first");
      trashItem(folder(name));
      writeFile(folder(name), "second");
      const FileURL place = trashItem(folder(name));
      const std::string others = "10 1700000000 other\n12 1700000001 not%20it\nan odd line\n";
      const std::string own = percentEncoded(place.lastPathComponent());
      writeFile(bin("directorysizes"), "7 1700000000 " + own + "\n" + others);

      EXPECT_EQ(putBack(place, name), 0);
      EXPECT_EQ(readFile(folder(name)), "second");
      EXPECT_EQ(namesIn(bin("files")).size(), 1U) << "the first one stays";
      EXPECT_EQ(namesIn(bin("info")).size(), 1U);
      EXPECT_EQ(readFile(bin("directorysizes")), others);
      EXPECT_EQ(namesIn(bin("")), (std::set<std::string>{"directorysizes", "files", "info"}));
      erase(bin(""));
      erase(folder(name));
    });
  }
}

TEST_F(PutBackTest, NeverReplacesWhatLiesInTheFolder) {
  for (const std::string source : {"item 1", "item/", "item -> nowhere"}) {
    for (const std::string occupant : {"item 3", "item/", "item -> nowhere", "item |"}) {
      SCOPED_TRACE(source + " to " + occupant);
      bothWays([&] {
        const FileURL place = layItem(source);
        makeTree(folder(""), occupant);
        const auto before = std::filesystem::symlink_status(folder("item").path()).type();
        EXPECT_EQ(putBack(place), EEXIST);
        EXPECT_NE(_reason.find("something else lies at"), std::string::npos) << _reason;
        EXPECT_EQ(std::filesystem::symlink_status(folder("item").path()).type(), before);
        if (occupant == "item 3") {
          EXPECT_EQ(readFile(folder("item")), "xxx");
        }
        EXPECT_TRUE(exists(place) && exists(bin("info/item.trashinfo")));
        erase(folder("item"));
      });
    }
  }
}

TEST_F(PutBackTest, LeavesAnItemThatChangedInWhateverWay) {
  const FileURL place = layItem();
  const auto opened = open();
  const auto item = opened->binnedItem(place, "item");
  setMode(place, 0600);
  EXPECT_THROW(item->putBack(), ItemChanged);
  EXPECT_TRUE(exists(place));
}

/// What others do between the look into the Bin and the rename out of it.
TEST_F(PutBackTest, BringsBackWhatWasLookedAtOrNothing) {
  const FileURL place = bin("files/item");
  const auto exchange = [](const FileURL& a, const FileURL& b) {
    return [=] { renameat2(-1, a.path().c_str(), -1, b.path().c_str(), RENAME_EXCHANGE); };
  };
  const auto moving = [](const FileURL& from, const FileURL& to) {
    return [=] { move(from, to); };
  };
  const struct {
    const char* title;
    std::function<void()> happens;
    int code;
    const char* inBin;
    bool hasRecord;
    std::string folder = "folder";  // Where the folder lies in the end.
  } rows[] = {
      {"another item", exchange(place, home("Decoy/item")), ESTALE, "decoy", true},
      {"other content", [&] { writeFile(place, "longer content"); }, ESTALE, "longer content",
       true},
      {"the folder deleted", [&] { erase(folder("")); }, ENOENT, "content", true},
      {"taken away", moving(place, home("taken")), ENOENT, "nothing", true},
      {"the Bin's items exchanged", exchange(bin("files"), home("Decoy")), 0, "decoy", false},
      {"a later item's record", [&] { writeFile(bin("info/item.trashinfo"), "[Trash Info]\n"); }, 0,
       "nothing", true},
      {"the folder in the Bin", moving(folder(""), bin("files/folder")), ENOENT, "content", true,
       ".local/share/Trash/files/folder"},
      {"the folder renamed", moving(folder(""), home("renamed")), 0, "nothing", false, "renamed"},
  };
  for (const auto& row : rows) {
    for (const bool isLate : {false, true}) {
      SCOPED_TRACE(row.title + std::string(isLate ? ", at the last moment" : ""));
      for (const char* name : {"folder", "renamed", "Decoy", ".local"})
        erase(home(name));
      makeTree(home(""), "folder/\nDecoy/");
      writeFile(home("Decoy/item"), "decoy");
      lay(bin(""), "item", folder("item").path());
      const auto opened = open();
      const auto item = opened->binnedItem(place, "item");
      ASSERT_NE(item, nullptr);

      int code = 0;
      const auto act = [&](int call) {
        if (call == 1) row.happens();
      };
      const auto back = [&] { code = codeOf([&] { item->putBack(); }); };
      if (!isLate) row.happens();
      isLate ? withActionBefore(SYS_renameat2, act, back) : back();

      EXPECT_EQ(code, row.code);
      EXPECT_EQ(contentOf(home(row.folder + "/item")), code == 0 ? "content" : "nothing");
      EXPECT_EQ(contentOf(place), row.inBin);
      EXPECT_EQ(exists(bin("info/item.trashinfo")), row.hasRecord);
    }
  }
}

}  // namespace
}  // namespace tidemar::testing
