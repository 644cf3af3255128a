#include <cerrno>
#include <filesystem>
#include <functional>
#include <memory>
#include <set>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "Platform/Files/DiskFileManager.h"
#include "Platform/Files/Trash/PercentEncoding.h"
#include "support/FailingSystemCall.h"
#include "support/FileExpectations.h"
#include "support/FolderActions.h"
#include "support/ScopedEnvironment.h"
#include "support/SystemCallHook.h"
#include "support/TemporaryTree.h"
#include "support/TestFileSystems.h"

namespace tidemar {
namespace {

using namespace testing;

const std::string user = std::to_string(geteuid());

void rename(const FileURL& from, const FileURL& to) {
  std::filesystem::rename(from.path(), to.path());
}

void exchange(const FileURL& a, const FileURL& b) {
  EXPECT_EQ(renameat2(AT_FDCWD, a.path().c_str(), AT_FDCWD, b.path().c_str(), RENAME_EXCHANGE), 0);
}

class PutBackTest : public ::testing::Test {
 protected:
  PutBackTest() { makeTree(_home.url(), "folder/"); }

  FileURL home(const std::string& relative) const { return _home.url(relative); }
  FileURL trash(const std::string& relative) const {
    return home(".local/share/Trash/" + relative);
  }
  FileURL folder(const std::string& relative) const { return home("folder/" + relative); }

  /// Whether the Bin has an item at this place that went from the folder as `name`.
  bool knows(const FileURL& place, const std::string& name = "item") const {
    return knows(place, name, home("folder"));
  }
  static bool knows(const FileURL& place, const std::string& name, const FileURL& folder) {
    return DiskFileManager().openFolder(folder)->binnedItem(place, name) != nullptr;
  }

  void putBack(const FileURL& place, const std::string& name) const {
    const auto opened = DiskFileManager().openFolder(home("folder"));
    const auto item = opened->binnedItem(place, name);
    ASSERT_NE(item, nullptr);
    item->putBack();
  }

  TemporaryDirectory _home;
  ScopedHome _environment{_home.url()};
};

TEST_F(PutBackTest, BelievesNoPlaceButOneInTheTrashOfThisUser) {
  EXPECT_FALSE(knows(trash("files/item")));
  EXPECT_FALSE(exists(trash(""))) << "none is made to look into it";
  const std::string item = folder("item").path();
  const FileURL real = layInTrash(trash(""), "item", item);
  const std::string files = trash("files").path();
  std::filesystem::create_symlink(home(".local").path(), home("link").path());
  std::filesystem::create_directories(files + "/tree");
  rename(layInTrash(trash(""), "deep", item), trash("files/tree/deep"));
  layInTrash(trash(""), "gone", item);
  std::filesystem::remove(files + "/gone");

  const struct {
    const char* title;
    FileURL place;
    bool isKnown = false;
  } rows[] = {
      {"the home Trash", real, true},
      {"the home Trash by way of a link", home("link/share/Trash/files/item"), true},
      {"no path", FileURL()},
      {"a relative path", FileURL(real.path().substr(1))},
      {"a way up and down again", FileURL(files + "/../files/item")},
      {"a path that is cut off", FileURL(real.path() + std::string("\0", 1))},
      {"the directory above", FileURL(files + "/..")},
      {"the Trash's own directory", trash("files")},
      {"a record", (layInTrash(trash(""), "item.trashinfo", item), trash("info/item.trashinfo"))},
      {"what has gone", trash("files/gone")},
      {"a name that is too long for anything", trash("files/" + std::string(256, 'x'))},
      {"deeper in an item", trash("files/tree/deep")},
      {"a document", layInTrash(home("Documents"), "item", item)},
      {"beside the database", layInTrash(home(".local/share/Tidemar"), "tidemar.sqlite", item)},
      {"another directory of that name", layInTrash(home("Trash"), "item", item)},
      {"a drive's Trash that isn't at the top", layInTrash(home(".Trash-" + user), "item", item)},
      {"a shared Trash that isn't at the top", layInTrash(home(".Trash/" + user), "item", item)},
  };
  ASSERT_EQ(chmod(home(".Trash").path().c_str(), 01777), 0);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    EXPECT_EQ(knows(row.place), row.isKnown);
  }
}

TEST_F(PutBackTest, BelievesNoTrashOfADriveThatSomeoneElseCouldArrange) {
  const TestFileSystem drive(TestFileSystem::Type::tmpfs);
  if (!drive.isMounted()) GTEST_SKIP() << drive.reason();
  const std::string own = ".Trash-" + user;
  const std::string shared = ".Trash/" + user;
  const auto link = [&](const std::string& name) {
    rename(drive.url(name), drive.url("elsewhere"));
    std::filesystem::create_symlink(drive.url("elsewhere").path(), drive.url(name).path());
  };
  const auto giveAway = [&](const std::string& name) {
    ASSERT_EQ(chown(drive.url(name).path().c_str(), 77, 77), 0);
  };
  const auto protect = [&] { ASSERT_EQ(chmod(drive.url(".Trash").path().c_str(), 01777), 0); };

  const struct {
    const char* title;
    std::string trash;
    std::function<void()> arrange;
    bool isKnown = false;
  } rows[] = {
      {"the user's own", own, [] {}, true},
      {"one that is a link", own, [&] { link(own); }},
      {"one that another user owns", own, [&] { giveAway(own); }},
      {"items elsewhere", own, [&] { link(own + "/files"); }},
      {"items of another user's", own, [&] { giveAway(own + "/files"); }},
      {"records elsewhere", own, [&] { link(own + "/info"); }},
      {"no records", own, [&] { rename(drive.url(own + "/info"), drive.url("elsewhere")); }},
      {"one for another user", own + "7", [] {}},
      {"one in a directory", "directory/" + own, [] {}},
      {"the shared one", shared, protect, true},
      {"the shared one without protection", shared, [] {}},
      {"the shared one as a link", shared, [&] { protect(), link(".Trash"); }},
      {"the shared one for another user", shared + "7", protect},
      {"another user's part of it", shared, [&] { protect(), giveAway(shared); }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    for (const auto& entry : std::filesystem::directory_iterator(drive.url().path()))
      std::filesystem::remove_all(entry.path());
    const FileURL place = layInTrash(drive.url(row.trash), "item", folder("item").path());
    row.arrange();
    EXPECT_EQ(knows(place), row.isKnown);
  }
}

TEST_F(PutBackTest, BelievesOnlyARecordThatNamesTheItemAndTheFolder) {
  makeTree(_home.url(), "other/\ndocument\nalias -> folder");
  const FileURL place = layInTrash(trash(""), "binned", "");
  const FileURL record = trash("info/binned.trashinfo");
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
      {"escaped letters", path("folder/%69te%6D"), true},
      {"escapes in escapes", path("folder/50%2525%0A"), true, "50%25\n"},
      {"an escaped escape is no escape", path("folder/%2569tem")},
      {"a percent sign that isn't escaped", path("folder/50%"), false, "50%"},
      {"a cut-off name", path("folder/item%00")},
      {"a slash in the name", path("folder/a%2Fb"), false, "a/b"},
      {"nothing but bytes", path("folder/%FF%01"), true, "\xFF\x01"},
      {"a name that leads up", path("folder/.."), false, ".."},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.title);
    layInTrash(trash(""), "binned", row.recordedPath);
    EXPECT_EQ(knows(place, row.name), row.isKnown);
  }

  const struct {
    const char* title;
    std::function<void()> arrange;
  } spoilt[] = {
      {"none", [] {}},
      {"empty", [&] { writeFile(record, ""); }},
      {"a link to a good one", [&] { makeTree(trash("info"), "binned.trashinfo -> ../good"); }},
      {"a directory", [&] { makeTree(trash("info"), "binned.trashinfo/"); }},
      {"a FIFO, which must not hold us up", [&] { makeTree(trash("info"), "binned.trashinfo |"); }},
      {"a line that isn't finished",
       [&] { writeFile(record, readFile(trash("good")).substr(0, 40)); }},
      {"far too long",
       [&] { writeFile(record, readFile(trash("good")) + std::string(1 << 20, '\n')); }},
  };
  layInTrash(trash(""), "binned", path("folder/item"));
  rename(record, trash("good"));
  for (const auto& row : spoilt) {
    SCOPED_TRACE(row.title);
    std::filesystem::remove(record.path());
    row.arrange();
    EXPECT_FALSE(knows(place));
  }
}

TEST_F(PutBackTest, TakesRelativePathsInRecordsOfADriveFromItsTop) {
  const TestFileSystem drive(TestFileSystem::Type::tmpfs);
  if (!drive.isMounted()) GTEST_SKIP() << drive.reason();
  makeTree(drive.url(), "a/\n  folder/\nfolder/");
  const FileURL own = drive.url(".Trash-" + user);
  for (const char* recorded : {"folder/item", "a/folder/item", "item"}) {
    SCOPED_TRACE(recorded);
    const FileURL place = layInTrash(own, "item", recorded);
    EXPECT_EQ(knows(place, "item", drive.url("folder")), recorded == std::string("folder/item"));
    EXPECT_EQ(knows(place, "item", drive.url("a/folder")),
              recorded == std::string("a/folder/item"));
  }
}

TEST_F(PutBackTest, TellsWhatItCannotReadFromWhatIsNotThere) {
  const FileURL place = layInTrash(trash(""), "item", folder("item").path());
  for (const long call : {SYS_read, SYS_statx}) {
    withFailingSystemCall(call, EIO, [&] { EXPECT_NE(codeOf([&] { knows(place); }), 0); });
  }
  const auto opened = DiskFileManager().openFolder(home("folder"));
  rename(home("folder"), trash("files/folder"));
  EXPECT_EQ(codeOf([&] { opened->binnedItem(place, "item"); }), ENOENT) << "in the Bin itself";
}

TEST_F(PutBackTest, BringsAnItemBackUnderItsNameAndTakesWhatTheTrashKnewOfIt) {
  for (const std::string name : {"a % #\n\xFF", "-rf", std::string(255, 'x').c_str()}) {
    for (const bool canRefuse : {true, false}) {
      SCOPED_TRACE(name);
      writeFile(folder(name), "content");
      trashItem(folder(name));
      writeFile(folder(name), "second");
      const FileURL second = trashItem(folder(name));
      const std::string foreign = "10 1700000000 other\n12 1700000001 not%20it\nan odd line\n";
      const std::string binnedName(second.lastPathComponent());
      writeFile(trash("directorysizes"),
                "7 1700000000 " + percentEncoded(binnedName) + "\n" + foreign);

      const auto back = [&] { putBack(second, name); };
      canRefuse ? back() : withFailingSystemCall(SYS_renameat2, EINVAL, back);

      EXPECT_EQ(readFile(folder(name)), "second");
      EXPECT_EQ(namesIn(trash("files")).size(), 1U) << "the first one stays";
      EXPECT_EQ(namesIn(trash("info")).size(), 1U);
      EXPECT_EQ(readFile(trash("directorysizes")), foreign);
      EXPECT_EQ(namesIn(trash("")), (std::set<std::string>{"directorysizes", "files", "info"}));
      std::filesystem::remove_all(trash("").path());
      std::filesystem::remove(folder(name).path());
    }
  }
}

TEST_F(PutBackTest, NeverReplacesWhatLiesInTheFolder) {
  for (const std::string source : {"item 1", "item/", "item -> nowhere"}) {
    for (const std::string occupant : {"item 3", "item/", "item -> nowhere", "item |"}) {
      for (const bool canRefuse : {true, false}) {
        SCOPED_TRACE(source + " to " + occupant);
        makeTree(home("folder"), source);
        const FileURL place = trashItem(folder("item"));
        makeTree(home("folder"), occupant);
        struct stat before {
        }, after{};
        ASSERT_EQ(lstat(folder("item").path().c_str(), &before), 0);
        const auto back = [&] { EXPECT_EQ(codeOf([&] { putBack(place, "item"); }), EEXIST); };
        canRefuse ? back() : withFailingSystemCall(SYS_renameat2, EINVAL, back);
        ASSERT_EQ(lstat(folder("item").path().c_str(), &after), 0);
        EXPECT_EQ(before.st_ino, after.st_ino);
        EXPECT_TRUE(exists(place));
        EXPECT_TRUE(exists(trash("info/item.trashinfo")));
        std::filesystem::remove_all(trash("").path());
        std::filesystem::remove_all(folder("item").path());
      }
    }
  }
}

TEST_F(PutBackTest, LeavesAnItemThatChangedInWhateverWay) {
  const FileURL place = layInTrash(trash(""), "item", folder("item").path());
  const auto opened = DiskFileManager().openFolder(home("folder"));
  const auto item = opened->binnedItem(place, "item");
  ASSERT_EQ(chmod(place.path().c_str(), 0600), 0);
  EXPECT_THROW(item->putBack(), ItemChanged);
  EXPECT_TRUE(exists(place));
}

/// What others do between the look into the Bin and the rename out of it.
TEST_F(PutBackTest, BringsBackWhatWasLookedAtOrNothing) {
  const FileURL place = trash("files/item");
  const FileURL record = trash("info/item.trashinfo");
  const struct {
    const char* title;
    int code;
    std::function<void()> happens;
    std::function<bool()> isRight;
  } rows[] = {
      {"another item in its place", ESTALE, [&] { exchange(place, home("Decoy/files/item")); },
       [&] { return readFile(place) == "decoy" && exists(record) && !exists(folder("item")); }},
      {"another item with its dates in its place", ESTALE,
       [&] {
         std::filesystem::last_write_time(home("Decoy/files/item").path(),
                                          std::filesystem::last_write_time(place.path()));
         exchange(place, home("Decoy/files/item"));
       },
       [&] { return readFile(place) == "decoy" && exists(record) && !exists(folder("item")); }},
      {"a directory in its place", ESTALE, [&] { exchange(place, home("Decoy/files")); },
       [&] { return exists(trash("files/item/item")) && !exists(folder("item")); }},
      {"written to", ESTALE, [&] { writeFile(place, "longer content"); },
       [&] { return readFile(place) == "longer content" && !exists(folder("item")); }},
      {"taken away", ENOENT, [&] { rename(place, home("taken")); },
       [&] { return !exists(folder("item")); }},
      {"the Bin's items exchanged", 0, [&] { exchange(trash("files"), home("Decoy/files")); },
       [&] { return readFile(folder("item")) == "content" && readFile(place) == "decoy"; }},
      {"the Bin's items a link", 0,
       [&] {
         rename(trash("files"), home("files"));
         std::filesystem::create_symlink(home("Decoy/files").path(), trash("files").path());
       },
       [&] { return readFile(folder("item")) == "content" && readFile(place) == "decoy"; }},
      {"the whole Bin exchanged", 0, [&] { exchange(trash(""), home("Decoy")); },
       [&] {
         return readFile(folder("item")) == "content" && exists(record) &&
                !exists(home("Decoy/info/item.trashinfo"));
       }},
      {"the record that of a later item", 0, [&] { writeFile(record, "[Trash Info]\n"); },
       [&] { return readFile(folder("item")) == "content" && exists(record); }},
      {"something in the folder", EEXIST, [&] { writeFile(folder("item"), "new"); },
       [&] { return readFile(folder("item")) == "new" && readFile(place) == "content"; }},
      {"the folder in the Bin", ENOENT, [&] { rename(home("folder"), trash("files/folder")); },
       [&] { return readFile(place) == "content" && namesIn(trash("files/folder")).empty(); }},
      {"the folder renamed", 0, [&] { rename(home("folder"), home("renamed")); },
       [&] { return readFile(home("renamed/item")) == "content" && !exists(record); }},
      {"the folder deleted", ENOENT, [&] { std::filesystem::remove(home("folder").path()); },
       [&] { return readFile(place) == "content" && exists(record); }},
  };
  for (const auto& row : rows) {
    for (const bool isLate : {false, true}) {
      SCOPED_TRACE(row.title + std::string(isLate ? ", at the last moment" : ""));
      for (const char* name : {"folder", "renamed", "files", "Decoy", ".local"})
        std::filesystem::remove_all(home(name).path());
      std::filesystem::create_directory(home("folder").path());
      writeFile(layInTrash(home("Decoy"), "item", "decoy"), "decoy");
      layInTrash(trash(""), "item", folder("item").path());

      const auto opened = DiskFileManager().openFolder(home("folder"));
      const auto item = opened->binnedItem(place, "item");
      ASSERT_NE(item, nullptr);
      int code = 0;
      const auto back = [&] { code = codeOf([&] { item->putBack(); }); };
      if (isLate) {
        withActionBefore(
            SYS_renameat2,
            [&](int call) {
              if (call == 1) row.happens();
            },
            back);
      } else {
        row.happens();
        back();
      }
      EXPECT_EQ(code, row.code);
      EXPECT_TRUE(row.isRight());
    }
  }
}

}  // namespace
}  // namespace tidemar
