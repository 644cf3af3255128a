#include <cerrno>
#include <filesystem>
#include <functional>
#include <set>
#include <string>

#include <fcntl.h>
#include <sys/syscall.h>

#include "Platform/Files/Trash/PercentEncoding.h"
#include "Platform/FolderAndBin.h"
#include "support/FailingSystemCall.h"
#include "support/FolderActions.h"

namespace tidemar {
namespace {

using namespace testing;
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

std::string contentOf(const FileURL& url) {
  if (std::filesystem::is_directory(url.path())) return "directory";
  return exists(url) ? readFile(url) : "nothing";
}

/// What others do between the look into the Bin and the rename out of it.
TEST_F(PutBackTest, BringsBackWhatWasLookedAtOrNothing) {
  const FileURL place = bin("files/item");
  const FileURL record = bin("info/item.trashinfo");
  const FileURL decoy = home("Decoy/files/item");
  const auto exchange = [](const FileURL& a, const FileURL& b) {
    return [=] { renameat2(-1, a.path().c_str(), -1, b.path().c_str(), RENAME_EXCHANGE); };
  };
  const auto moving = [](const FileURL& from, const FileURL& to) {
    return [=] { move(from, to); };
  };
  const auto writing = [](const FileURL& url, const char* content) {
    return [=] { writeFile(url, content); };
  };
  const struct {
    const char* title;
    std::function<void()> happens;
    int code;
    std::string inFolder;
    std::string inBin;
    bool hasRecord = true;
    std::string folder = "folder";  // Where the folder lies in the end.
  } rows[] = {
      {"another item", exchange(place, decoy), ESTALE, "nothing", "decoy"},
      {"another item of the same age",
       [&] { setModificationTime(decoy, 1e9), exchange(place, decoy)(); }, ESTALE, "nothing",
       "decoy"},
      {"a directory", exchange(place, home("Decoy/files")), ESTALE, "nothing", "directory"},
      {"other content", writing(place, "longer content"), ESTALE, "nothing", "longer content"},
      {"taken away", moving(place, home("taken")), ENOENT, "nothing", "nothing"},
      {"the Bin's items exchanged", exchange(bin("files"), home("Decoy/files")), 0, "content",
       "decoy", false},
      {"the Bin's items a link",
       [&] {
         move(bin("files"), home("files"));
         std::filesystem::create_symlink(home("Decoy/files").path(), bin("files").path());
       },
       0, "content", "decoy", false},
      {"the whole Bin exchanged", exchange(bin(""), home("Decoy")), 0, "content", "decoy"},
      {"a later item's record", writing(record, "[Trash Info]\n"), 0, "content", "nothing"},
      {"something in the folder", writing(folder("item"), "new"), EEXIST, "new", "content"},
      {"the folder in the Bin", moving(folder(""), bin("files/folder")), ENOENT, "nothing",
       "content", true, ".local/share/Trash/files/folder"},
      {"the folder renamed", moving(folder(""), home("renamed")), 0, "content", "nothing", false,
       "renamed"},
      {"the folder deleted", [&] { erase(folder("")); }, ENOENT, "nothing", "content"},
  };
  for (const auto& row : rows) {
    for (const bool isLate : {false, true}) {
      SCOPED_TRACE(row.title + std::string(isLate ? ", at the last moment" : ""));
      for (const char* name : {"folder", "renamed", "files", "Decoy", ".local"})
        erase(home(name));
      makeTree(home(""), "folder/");
      writeFile(lay(home("Decoy"), "item", ""), "decoy");
      setModificationTime(lay(bin(""), "item", folder("item").path()), 1e9);
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
      EXPECT_EQ(contentOf(home(row.folder + "/item")), row.inFolder);
      EXPECT_EQ(contentOf(place), row.inBin);
      EXPECT_EQ(exists(record), row.hasRecord);
    }
  }
}

}  // namespace
}  // namespace tidemar
