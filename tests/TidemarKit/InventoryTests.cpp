#include "TidemarKit/Inventory.h"
#include "TidemarKit/TemporaryTag.h"
#include "support/FakeFileManager.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

/// Items as "name size @freshness" or "name size undated".
std::string text(const std::vector<Item>& items) {
  std::ostringstream stream;
  for (const Item& item : items) {
    stream << (&item == items.data() ? "" : ", ") << item.url.lastPathComponent() << ' '
           << item.size;
    item.freshness ? stream << " @" << item.freshness->secondsSince1970 : stream << " undated";
  }
  return stream.str();
}

std::optional<Item> itemNamed(std::string_view name, OpenFolder& folder) {
  return Inventory::item(folder, name, Disposal::bin).item;
}

const std::tuple<const char*, const char*, const char*> cases[] = {
    {"entries stand in the order of the listing, with the later of their two dates, if any, and "
     "hidden ones don't",
     R"(
      /f/
        .hidden 10 @5
        flagged 10 @5 hidden
        .config/ @5
          inside 10 @5
        plain. 10 @5
        added added=9 changed=5
        changed added=5 changed=9
        onlyAdded added=4
        onlyChanged changed=4
        neither 3
        link 1 @2 -> /elsewhere)",
     "plain. 10 @5, added 0 @9, changed 0 @9, onlyAdded 0 @4, onlyChanged 0 @4, neither 3 undated, "
     "link 1 @2"},
    {"a directory counts by its added date, and what lies in it makes it fresher and bigger",
     R"(
      /f/
        own/ 4 added=5 changed=9
        changed/ 4 changed=9
        undated/ 4
        deep/ 4 @5
          old 10 @1
          e/ 4 @2
            new 20 @8
          last 1 @3
        content/
          a @8
        directoryIn/ @1
          e/ added=2 changed=9
        fileIn/ @1
          a added=2 changed=9
        linkIn/ @1
          link 1 @3 -> /elsewhere
        most/ 9223372036854775807 @1
          a 9223372036854775807 @1)",
     "own 4 @5, changed 4 @9, undated 4 undated, deep 39 @8, content 0 @8, directoryIn 0 @2, "
     "fileIn 0 @9, linkIn 1 @3, most 9223372036854775807 @1"},
    {"hidden contents count for the size alone, and behind them the dates count again",
     R"(
      /f/
        hidden/ @1
          old 10 @2
          .new 20 @9
          flagged 30 @9 hidden
          .git/ 4 @9
            a 100 @9
            deep/ @9
              b 200 @9
        behind/ @1
          .git/ @9
            a @9
          next @3
        above/ @1
          x/ @2
            .git/ @9
              deep/ @9
          up @4
        sibling/ @1
          .a @9
          e/ @2
            b @3
        alike/ @1
          build/ @9 hidden
            a 1 @9
          build2/ 1 @2
            b 1 @3)",
     "hidden 364 @2, behind 0 @3, above 0 @4, sibling 0 @3, alike 3 @3"},
    {"a package counts with the later of its own dates and the size of its tree",
     R"(
      /f/
        in/ @1
          Tool.app/ 1 added=2 changed=4 package
            a 10 @9
            b/ @9
          c @3
        hidden/ @1
          .Tool.app/ @9 package
            a 10 @9
        Tool.app/ 1 added=2 changed=4 package
          a 10 @9
          .b 20 @9
          Inner.app/ 40 @9 package
            c 80 @9
        Locked.app/ 1 @5 package
          a 10 @1
          locked/ @1 unreadable)",
     "in 11 @4, hidden 10 @1, Tool.app 151 @4, Locked.app 11 @5"},
    {"an unreadable part takes the date and keeps the size of the rest",
     R"(
      /f/
        d/ 1 @5
          before 10 @1
          locked/ 20 @1 unreadable
            hidden 100 @1
          after 40 @1
        e/ @5
          lost 10 @1 unreadable
        g/ 1 @5 unreadable
        hidden/ @5
          .git/ @1
            locked/ @1 unreadable
        whole/ @5)",
     "d 71 undated, e 0 undated, g 1 undated, hidden 0 undated, whole 0 @5"},
};

TEST(Inventory, turnsEntriesIntoItems) {
  for (const auto& [name, drawing, expected] : cases) {
    SCOPED_TRACE(name);
    FakeFileManager files;
    files.draw(drawing);
    const auto folder = files.openFolder(FileURL("/f"));
    const std::vector<Item> items = Inventory::items(*folder);
    EXPECT_EQ(text(items), expected);
    for (const Item& item : items) {
      EXPECT_EQ(item.url, FileURL("/f").appendingPathComponent(item.url.lastPathComponent()));
      EXPECT_EQ(itemNamed(item.url.lastPathComponent(), *folder), item);
    }
    for (const std::string hidden : {".hidden", "flagged", ".config"}) {
      if (files.exists("/f/" + hidden)) {
        EXPECT_EQ(itemNamed(hidden, *folder), std::nullopt) << hidden;
      }
    }
  }
}

TEST(Inventory, treatsMissingValuesAsAPlainFileAndThrowsWhereTheTopLevelCannotBeRead) {
  FakeFileManager files;
  files.draw(
      "/f/\n  lost @1 unreadable\n/locked/ unreadable\n/g/\n  d/ added=3 changed=5\n    a 10 @9");
  files.values("/g/d").isDirectory.reset();
  EXPECT_EQ(text(Inventory::items(*files.openFolder(FileURL("/g")))), "d 0 @5");
  for (const char* folder : {"/f", "/locked"})
    EXPECT_THROW(Inventory::items(*files.openFolder(FileURL(folder))), PlatformError) << folder;
  const auto folder = files.openFolder(FileURL("/f"));
  for (const char* name : {"lost", "missing"})
    EXPECT_THROW(itemNamed(name, *folder), PlatformError) << name;
}

TEST(Inventory, givesNoDateToWhatIsOrHoldsAnotherTemporaryFolder) {
  const struct {
    const char* known;
    const char* expected;
    bool isTagged = true;
    bool isFound = true;  // By its bookmark; else by its path alone.
  } rows[] = {
      {"/f/d", "d 4 undated, p 10 @5"},
      {"/f/d/e", "d 4 undated, p 10 @5"},
      {"/f/d/.h/e", "d 4 undated, p 10 @5"},
      {"/f/p/e", "d 4 @5, p 10 undated"},
      {"/f/d/e", "d 4 undated, p 10 @5", true, false},
      {"/f/d/e", "d 4 @5, p 10 @5", false},
      {"/g", "d 4 @5, p 10 @5"},
  };
  for (const auto& row : rows) {
    FakeFileManager files;
    files.draw(
        "/g/\n/f/\n  d/ 4 @5\n    e/ @5\n    .h/ @9\n      e/ @9\n"
        "  p/ package 10 @5\n    e/ @5");
    if (row.isTagged) files.tags(row.known) = {std::string(TemporaryTag::name)};
    const auto folder = files.openFolder(FileURL("/f"));
    const std::string bookmark = files.openFolder(FileURL(row.known))->bookmarkData();
    folder->setKnownFolders(std::make_shared<KnownFolders>(
        std::vector<KnownFolder>{{row.isFound ? bookmark : "0#/", row.known}}));
    EXPECT_EQ(text(Inventory::items(*folder)), row.expected) << row.known;
    EXPECT_EQ(itemNamed("d", *folder)->freshness, Inventory::items(*folder)[0].freshness);
  }
}

}  // namespace
}  // namespace tidemar::testing
