#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "TidemarKit/Inventory.h"
#include "TidemarKit/TemporaryTag.h"
#include "support/FakeFileManager.h"

namespace tidemar {
namespace {

using testing::FakeFileManager;

/// An item as "name size @freshness", or "name size undated".
std::string text(const Item& item) {
  std::ostringstream stream;
  stream << item.url.lastPathComponent() << ' ' << item.size << ' ';
  if (item.freshness) {
    stream << '@' << item.freshness->secondsSince1970;
  } else {
    stream << "undated";
  }
  return stream.str();
}

std::string text(const std::vector<Item>& items) {
  std::string result;
  for (const Item& item : items)
    result += (result.empty() ? "" : ", ") + text(item);
  return result;
}

std::optional<Item> itemNamed(std::string_view name, OpenFolder& folder) {
  return Inventory::item(folder, name, Disposal::bin).item;
}

struct Case {
  const char* name;
  const char* drawing;
  const char* expected;
};

const std::vector<Case> cases = {
    {"an empty folder has no items", "/f/", ""},
    {"hidden entries are no items, by name or by flag",
     R"(
      /f/
        .hidden 10 @5
        flagged 10 @5 hidden
        .config/ @5
          inside 10 @5
        plain. 10 @5)",
     "plain. 10 @5"},
    {"items stand in the order of the listing",
     R"(
      /f/
        b @2
        a @3
        c @1)",
     "b 0 @2, a 0 @3, c 0 @1"},
    {"a file has the later of its two dates, or the one there is",
     R"(
      /f/
        added added=9 changed=5
        changed added=5 changed=9
        same @7
        onlyAdded added=4
        onlyChanged changed=4
        neither 3)",
     "added 0 @9, changed 0 @9, same 0 @7, onlyAdded 0 @4, onlyChanged 0 @4, neither 3 undated"},
    {"a directory's own date is its added date, however lately it changed",
     R"(
      /f/
        d/ 4 added=5 changed=9
        e/ 4 changed=9
        g/ 4)",
     "d 4 @5, e 4 @9, g 4 undated"},
    {"what lies in a directory at any depth makes it fresher and bigger",
     R"(
      /f/
        d/ 4 @5
          old 10 @1
          e/ 4 @2
            new 20 @8
          last 1 @3)",
     "d 39 @8"},
    {"a directory without a date has that of its contents",
     R"(
      /f/
        d/
          a @8)",
     "d 0 @8"},
    {"inside too a directory counts by its added date, a file by the later one",
     R"(
      /f/
        d/ @1
          e/ added=2 changed=9
        g/ @1
          a added=2 changed=9)",
     "d 0 @2, g 0 @9"},
    {"hidden contents count for the size alone",
     R"(
      /f/
        d/ @1
          old 10 @2
          .new 20 @9
          flagged 30 @9 hidden
          .git/ 4 @9
            a 100 @9
            deep/ @9
              b 200 @9)",
     "d 364 @2"},
    {"behind a hidden directory the dates count again",
     R"(
      /f/
        d/ @1
          .git/ @9
            a @9
          next @3
        e/ @1
          x/ @2
            .git/ @9
              deep/ @9
          up @4)",
     "d 0 @3, e 0 @4"},
    {"behind a hidden file its sibling's contents count",
     R"(
      /f/
        d/ @1
          .a @9
          e/ @2
            b @3)",
     "d 0 @3"},
    {"a name that begins with a hidden one is another name",
     R"(
      /f/
        d/ @1
          build/ @9 hidden
            a 1 @9
          build2/ 1 @2
            b 1 @3)",
     "d 3 @3"},
    {"a package inside counts for the dates and its contents don't",
     R"(
      /f/
        d/ @1
          Tool.app/ 1 added=2 changed=4 package
            a 10 @9
            b/ @9
          c @3)",
     "d 11 @4"},
    {"a hidden package inside counts for no date",
     R"(
      /f/
        d/ @1
          .Tool.app/ @9 package
            a 10 @9)",
     "d 10 @1"},
    {"a package has the later of its own dates and the size of its tree",
     R"(
      /f/
        Tool.app/ 1 added=2 changed=4 package
          a 10 @9
          .b 20 @9
          Inner.app/ 40 @9 package
            c 80 @9)",
     "Tool.app 151 @4"},
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
        g/ 1 @5 unreadable)",
     "d 71 undated, e 0 undated, g 1 undated"},
    {"an unreadable part of a hidden directory takes the date as well",
     R"(
      /f/
        d/ @5
          .git/ @1
            locked/ @1 unreadable)",
     "d 0 undated"},
    {"a package with an unreadable part keeps its own dates",
     R"(
      /f/
        Tool.app/ 1 @5 package
          a 10 @1
          locked/ @1 unreadable)",
     "Tool.app 11 @5"},
    {"a link is an item of its own, and nobody walks behind it",
     R"(
      /elsewhere/
        big 1000 @9
      /f/
        link 1 @2 -> /elsewhere
        d/ @1
          link 1 @3 -> /elsewhere)",
     "link 1 @2, d 1 @3"},
    {"sizes beyond the range count as the end of it",
     R"(
      /f/
        d/ 9223372036854775807 @1
          a 9223372036854775807 @1
          b 9223372036854775807 @1)",
     "d 9223372036854775807 @1"},
};

TEST(Inventory, turnsEntriesIntoItems) {
  for (const Case& c : cases) {
    FakeFileManager files;
    files.draw(c.drawing);
    const auto folder = files.openFolder(FileURL("/f"));
    const std::vector<Item> items = Inventory::items(*folder);
    EXPECT_EQ(text(items), c.expected) << c.name;
    for (const Item& item : items) {
      EXPECT_EQ(item.url, FileURL("/f").appendingPathComponent(item.url.lastPathComponent()));
      EXPECT_EQ(itemNamed(item.url.lastPathComponent(), *folder), item) << c.name;
    }
  }
}

TEST(Inventory, readsAHiddenEntryAsNoItem) {
  FakeFileManager files;
  files.draw(R"(
    /f/
      .a @1
      b @1 hidden
      c/ @1 hidden)");
  const auto folder = files.openFolder(FileURL("/f"));
  for (const char* name : {".a", "b", "c"})
    EXPECT_EQ(itemNamed(name, *folder), std::nullopt) << name;
}

TEST(Inventory, treatsMissingValuesAsAPlainFile) {
  FakeFileManager files;
  files.draw(R"(
    /f/
      d/ @5
        a 10 @9)");
  files.values("/f/d").isDirectory.reset();
  EXPECT_EQ(text(Inventory::items(*files.openFolder(FileURL("/f")))), "d 0 @5");
}

TEST(Inventory, throwsWhereTheTopLevelCannotBeRead) {
  FakeFileManager files;
  files.draw(R"(
    /f/
      a @1
      lost @1 unreadable
    /locked/ unreadable)");
  for (const char* folder : {"/f", "/locked"})
    EXPECT_THROW(Inventory::items(*files.openFolder(FileURL(folder))), PlatformError) << folder;
  const auto folder = files.openFolder(FileURL("/f"));
  for (const char* name : {"lost", "missing"})
    EXPECT_THROW(itemNamed(name, *folder), PlatformError) << name;
}

TEST(Inventory, givesNoDateToWhatIsOrHoldsAnotherTemporaryFolder) {
  struct Row {
    const char* known;
    bool isTagged;
    bool isFound;  // By its bookmark; else by its path alone.
    const char* expected;
  };
  for (const Row& row :
       {Row{"/f/d", true, true, "d 4 undated, p 10 @5"},
        Row{"/f/d/e", true, true, "d 4 undated, p 10 @5"},
        Row{"/f/d/.h/e", true, true, "d 4 undated, p 10 @5"},
        Row{"/f/p/e", true, true, "d 4 @5, p 10 undated"},
        Row{"/f/d/e", true, false, "d 4 undated, p 10 @5"},
        Row{"/f/d/e", false, true, "d 4 @5, p 10 @5"}, Row{"/g", true, true, "d 4 @5, p 10 @5"}}) {
    FakeFileManager files;
    files.draw(R"(
      /g/
      /f/
        d/ 4 @5
          e/ @5
          .h/ @9
            e/ @9
        p/ package 10 @5
          e/ @5)");
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
}  // namespace tidemar
