#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "TidemarCore/Disposal.h"
#include "TidemarCore/FileURL.h"
#include "TidemarCore/Item.h"
#include "TidemarCore/Rule.h"
#include "TidemarCore/SaturatingArithmetic.h"

namespace tidemar {
namespace {

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
  std::vector<std::string_view> words;
  for (Rule rule : allRules) {
    words.push_back(rawValue(rule));
    EXPECT_EQ(ruleFromRawValue(words.back()), rule);
  }
  EXPECT_EQ(words, (std::vector<std::string_view>{"age", "size", "automatic", "emptyOnRestart"}));
  for (const char* text : {"", "Age", "age ", "emptyonrestart"})
    EXPECT_EQ(ruleFromRawValue(text), std::nullopt) << text;

  EXPECT_EQ(disposalFromRawValue("bin"), Disposal::bin);
  EXPECT_EQ(disposalFromRawValue("delete"), Disposal::delete_);
  for (const char* text : {"", "Bin", "trash", "delete_", "delete "})
    EXPECT_EQ(disposalFromRawValue(text), std::nullopt) << text;
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

TEST(EntryURLs, keepTheNamesOfManyEntriesApart) {
  EntryURLs urls(FileURL("/f"));
  std::vector<FileURL> made;
  for (std::size_t i = 0; i < 2000; ++i)
    made.push_back(urls.make(std::string(i % 256, static_cast<char>('a' + i % 26))));
  for (std::size_t i = 0; i < made.size(); ++i) {
    const std::string name(i % 256, static_cast<char>('a' + i % 26));
    EXPECT_EQ(made[i].path(), "/f/" + name);
    EXPECT_EQ(made[i].lastPathComponent(), name);
  }
}

}  // namespace
}  // namespace tidemar
