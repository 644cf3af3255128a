#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "TidemarCore/RemovalPlanning.h"
#include "support/Values.h"

namespace tidemar {
namespace {

using testing::item;

constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
constexpr double now = 1'000'000'000;
constexpr double day = 86400;

/// Settings with no rule on.
TemporarySettings off() {
  return {std::nullopt, std::nullopt, false, false, Disposal::bin};
}
TemporarySettings age(std::int64_t days) {
  TemporarySettings settings = off();
  settings.maxAgeDays = days;
  return settings;
}
TemporarySettings size(std::int64_t limit) {
  TemporarySettings settings = off();
  settings.sizeLimit = limit;
  return settings;
}
TemporarySettings automatic(Disposal disposal = Disposal::delete_) {
  TemporarySettings settings = off();
  settings.automatic = true;
  settings.disposal = disposal;
  return settings;
}
TemporarySettings restart() {
  TemporarySettings settings = off();
  settings.emptyOnRestart = true;
  return settings;
}
/// Every rule on, each of them hungry.
TemporarySettings everything() {
  return {0, 0, true, true, Disposal::delete_};
}

/// A disk with room enough, started after the last run.
RunConditions conditions(std::int64_t available = 500, std::int64_t total = 1000,
                         double bootTime = now - 100, double lastRunAt = now - 200) {
  return {Date{now}, available, total, Date{bootTime}, Date{lastRunAt}};
}

/// Each removal as its name and the first letters of its reasons: "a:as" went by age and size.
std::string text(const std::vector<Removal>& removals) {
  std::string result;
  for (const Removal& removal : removals) {
    if (!result.empty()) result += ' ';
    result += std::string(removal.item->url.lastPathComponent()) + ":";
    for (Rule rule : allRules) {
      if (removal.reasons.contains(rule))
        result += rule == Rule::automatic ? 'd' : rawValue(rule)[0];
    }
  }
  return result;
}

struct Case {
  const char* name;
  std::vector<Item> items;
  TemporarySettings settings;
  RunConditions conditions;
  const char* expected;
};

TemporarySettings ageAndSize(std::int64_t days, std::int64_t limit) {
  TemporarySettings settings = age(days);
  settings.sizeLimit = limit;
  return settings;
}

const std::vector<Item> threeOfTen = {item("c", now - 1, 10), item("a", now - 3, 10),
                                      item("b", now - 2, 10)};

const std::vector<Case> cases = {
    {"with no rule on nothing goes", {item("a", 0, 100)}, off(), conditions(0), ""},
    {"of an empty folder nothing goes", {}, everything(), conditions(0), ""},

    {"an item of exactly the age stays", {item("a", now - 7 * day)}, age(7), conditions(), ""},
    {"an item older by a fraction of a second goes",
     {item("a", now - 7 * day - 1e-6)},
     age(7),
     conditions(),
     "a:a"},
    {"at 0 days what is older than now goes",
     {item("now", now), item("before", now - 0.001), item("later", now + 5)},
     age(0),
     conditions(),
     "before:a"},
    {"a negative age reaches into the future",
     {item("a", now + day / 2)},
     age(-1),
     conditions(),
     "a:a"},
    {"an age beyond all dates takes nothing", {item("a", 0)}, age(most), conditions(), ""},
    {"an item without a date doesn't go by age",
     {item("a", std::nullopt)},
     age(0),
     conditions(),
     ""},
    {"the oldest goes first", threeOfTen, age(0), conditions(), "a:a b:a c:a"},

    {"a folder at its limit loses nothing", threeOfTen, size(30), conditions(), ""},
    {"a folder one byte over loses its oldest item", threeOfTen, size(29), conditions(), "a:s"},
    {"reaching the limit exactly is enough", threeOfTen, size(10), conditions(), "a:s b:s"},
    {"of equal dates the first name goes",
     {item("b", 5, 10), item("a", 5, 10)},
     size(19),
     conditions(),
     "a:s"},
    {"an item of no size is taken on the way",
     {item("empty", 1, 0), item("a", 2, 10), item("b", 3, 10)},
     size(10),
     conditions(),
     "empty:s a:s"},
    {"items without a date never go, however far over",
     {item("a", std::nullopt, 100), item("b", std::nullopt, 100)},
     size(1),
     conditions(),
     ""},
    {"a huge item without a date pushes out the dated ones",
     {item("huge", std::nullopt, 1000), item("b", 2, 10), item("a", 1, 10)},
     size(100),
     conditions(),
     "a:s b:s"},
    {"sizes beyond the range count as the end of it",
     {item("a", 1, most), item("b", 2, most)},
     size(most - 1),
     conditions(),
     "a:s"},
    {"the lowest limit there is takes everything",
     {item("a", 1, most), item("b", 2, 0)},
     size(std::numeric_limits<std::int64_t>::min()),
     conditions(),
     "a:s"},

    {"a disk with exactly a tenth free is left alone", threeOfTen, automatic(),
     conditions(100, 1000), ""},
    {"a disk one byte short gets its tenth back", threeOfTen, automatic(), conditions(99, 1000),
     "a:d"},
    {"the tenth is rounded up", threeOfTen, automatic(), conditions(100, 1001), "a:d"},
    {"what was rounded up is enough", threeOfTen, automatic(), conditions(101, 1001), ""},
    {"a move to the Bin frees no disk", threeOfTen, automatic(Disposal::bin), conditions(0, 1000),
     ""},
    {"a total at the end of the range is no trouble", threeOfTen, automatic(), conditions(0, most),
     "a:d b:d c:d"},

    {"without a restart since the last run nothing goes",
     {item("a", 1)},
     restart(),
     conditions(500, 1000, now - 100, now - 99),
     ""},
    {"a run at the very start counts as after it",
     {item("a", 1)},
     restart(),
     conditions(500, 1000, now - 100, now - 100),
     ""},
    {"what was there at the start goes, what came at it stays",
     {item("at", now - 100), item("before", now - 100.5), item("after", now - 99),
      item("undated", std::nullopt)},
     restart(),
     conditions(),
     "before:e"},

    {"each item carries every rule that reaches it",
     {item("a", now - 9 * day, 10), item("b", now - 8 * day, 10), item("c", now - day, 10),
      item("d", now, 10)},
     ageAndSize(7, 10),
     conditions(),
     "a:as b:as c:s"},
    {"all four rules can take one item",
     {item("a", now - 101, 10)},
     everything(),
     conditions(99),
     "a:asde"},
};

TEST(RemovalPlanning, takesWhatTheRulesSay) {
  for (const Case& c : cases) {
    const FolderSnapshot snapshot{true, false, c.items};
    EXPECT_EQ(text(removalsDueNow(snapshot, c.settings, c.conditions)), c.expected) << c.name;
  }
}

TEST(RemovalPlanning, takesNothingFromAnUntaggedFolderOrAProtectedRoot) {
  for (const Case& c : cases) {
    for (const FolderSnapshot& snapshot :
         {FolderSnapshot{false, false, c.items}, FolderSnapshot{true, true, c.items}}) {
      EXPECT_EQ(text(removalsDueNow(snapshot, c.settings, c.conditions)), "") << c.name;
    }
  }
}

TEST(ItemsToFree, isTheSmallestNumberOfTheOldestThatSuffices) {
  const std::vector<Item> items = {item("a", 1, 5), item("b", 2, 0), item("c", 3, 5)};
  std::vector<DatedItem> list;
  for (const Item& i : items)
    list.push_back({&i, *i.freshness});
  const std::vector<std::pair<std::int64_t, std::int64_t>> rows = {
      {-1, 0}, {0, 0}, {1, 1}, {5, 1}, {6, 3}, {10, 3}, {11, 3}, {most, 3}};
  for (const auto& [bytes, expected] : rows)
    EXPECT_EQ(itemsToFree(bytes, list), expected) << bytes;
  EXPECT_EQ(itemsToFree(1, {}), 0);

  const Item nearlyAll = item("d", 4, most - 1);
  const std::vector<DatedItem> beyondTheRange = {{&nearlyAll, {4}}, {&nearlyAll, {4}}};
  EXPECT_EQ(itemsToFree(most, beyondTheRange), 2);
}

}  // namespace
}  // namespace tidemar
