#include <limits>

#include <gtest/gtest.h>

#include "TidemarCore/Disposal.h"
#include "TidemarCore/FileURL.h"
#include "TidemarCore/Item.h"
#include "TidemarCore/ProtectedRoots.h"
#include "TidemarCore/Rule.h"
#include "TidemarCore/SaturatingArithmetic.h"
#include "TidemarCore/TemporarySettings.h"
#include "support/Values.h"

namespace tidemar {
namespace {

using testing::item;

TEST(Item, isComparedOverAllItsFields) {
  EXPECT_EQ(item("a", 1, 2), item("a", 1, 2));
  EXPECT_NE(item("a", 1, 2), item("b", 1, 2));
  EXPECT_NE(item("a", 1, 2), item("a", 1.5, 2));
  EXPECT_NE(item("a", 1, 2), item("a", std::nullopt, 2));
  EXPECT_NE(item("a", 1, 2), item("a", 1, 3));
}

TEST(LaterDate, isTheLaterOrTheOneThatExists) {
  constexpr Date early{-5};
  constexpr Date late{7.5};
  EXPECT_EQ(laterDate(early, late), late);
  EXPECT_EQ(laterDate(late, early), late);
  EXPECT_EQ(laterDate(late, late), late);
  EXPECT_EQ(laterDate(std::nullopt, early), early);
  EXPECT_EQ(laterDate(early, std::nullopt), early);
  EXPECT_EQ(laterDate(std::nullopt, std::nullopt), std::nullopt);
}

TEST(RawValues, standForTheirCaseAndNothingElseDoes) {
  EXPECT_EQ(ruleFromRawValue("age"), Rule::age);
  EXPECT_EQ(ruleFromRawValue("size"), Rule::size);
  EXPECT_EQ(ruleFromRawValue("automatic"), Rule::automatic);
  EXPECT_EQ(ruleFromRawValue("emptyOnRestart"), Rule::emptyOnRestart);
  for (Rule rule : allRules)
    EXPECT_EQ(ruleFromRawValue(rawValue(rule)), rule);
  for (const char* text : {"", "Age", "age ", "emptyonrestart", "ages"})
    EXPECT_EQ(ruleFromRawValue(text), std::nullopt) << text;

  EXPECT_EQ(disposalFromRawValue("bin"), Disposal::bin);
  EXPECT_EQ(disposalFromRawValue("delete"), Disposal::delete_);
  EXPECT_EQ(rawValue(Disposal::bin), "bin");
  EXPECT_EQ(rawValue(Disposal::delete_), "delete");
  for (const char* text : {"", "Bin", "trash", "delete_", "delete "})
    EXPECT_EQ(disposalFromRawValue(text), std::nullopt) << text;
}

TEST(TemporarySettings, ofANewFolderClearNinetyDayOldItemsToTheBinAndNothingElse) {
  EXPECT_EQ(TemporarySettings(),
            (TemporarySettings{90, std::nullopt, false, false, Disposal::bin}));
}

TEST(SaturatingArithmetic, staysAtTheEndOfTheRange) {
  constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
  constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
  EXPECT_EQ(addingSaturated(most - 1, 1), most);
  EXPECT_EQ(addingSaturated(most, 1), most);
  EXPECT_EQ(addingSaturated(least, -1), least);
  EXPECT_EQ(addingSaturated(most, least), -1);
  EXPECT_EQ(subtractingSaturated(most, -1), most);
  EXPECT_EQ(subtractingSaturated(least, 1), least);
  EXPECT_EQ(subtractingSaturated(-1, most), least);
  EXPECT_EQ(subtractingSaturated(0, least), most);
}

TEST(FileURL, takesAPathApart) {
  struct Case {
    const char* path;
    const char* normalPath;
    const char* lastPathComponent;
    const char* parent;
  };
  for (const Case& c : {Case{"/f/a", "/f/a", "a", "/f"}, Case{"/f/a//", "/f/a", "a", "/f"},
                        Case{"/a", "/a", "a", "/"}, Case{"/", "/", "/", "/"},
                        Case{"//", "/", "/", "/"}, Case{"", "", "", ""}, Case{"a", "a", "a", ""}}) {
    const FileURL url(c.path);
    EXPECT_EQ(url.path(), c.normalPath) << c.path;
    EXPECT_EQ(url.lastPathComponent(), c.lastPathComponent) << c.path;
    EXPECT_EQ(url.deletingLastPathComponent().path(), c.parent) << c.path;
  }
  EXPECT_EQ(FileURL("/").appendingPathComponent("a").path(), "/a");
  EXPECT_EQ(FileURL("/f").appendingPathComponent("\xff b").path(), "/f/\xff b");
}

TEST(ProtectedRoots, areTheSystemsThenTheHomesThenTheVolumes) {
  const std::vector<FileURL> volumes = {FileURL("/media/stick"), FileURL("/mnt")};
  std::vector<std::string> paths;
  for (const FileURL& url : protectedRootURLs(FileURL("/home/ada"), volumes))
    paths.push_back(url.path());
  EXPECT_EQ(paths,
            (std::vector<std::string>{"/", "/Applications", "/Library", "/System", "/Users",
                                      "/home/ada", "/home/ada/Desktop", "/home/ada/Documents",
                                      "/home/ada/Library", "/media/stick", "/mnt"}));
}

}  // namespace
}  // namespace tidemar
