#include "TidemarCore/Forecast.h"
#include "TidemarCore/RemovalPlanning.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

TemporarySettings age(std::optional<std::int64_t> days) {
  return {days, std::nullopt, false, false, Disposal::delete_};
}

TEST(Forecast, givesEveryDatedItemTheLastInstantAtWhichItStays) {
  const double freshness = 1'700'000'000.25;
  const std::vector<Item> items = {item("new", freshness), item("undated", std::nullopt),
                                   item("old", freshness - 100 * secondsPerDay)};
  const FolderSnapshot snapshot{true, false, items};
  const std::vector<Upcoming> upcoming = upcomingRemovals(snapshot, age(30));
  ASSERT_EQ(namesOf(upcoming), "old new");
  EXPECT_EQ(upcoming[0].date, Date{freshness - 70 * secondsPerDay});
  EXPECT_EQ(upcoming[1].date, Date{freshness + 30 * secondsPerDay});
  EXPECT_EQ(upcoming[1].item, &snapshot.items[0]);

  RunConditions conditions{upcoming[1].date, 500, 1000, {}, {}};
  EXPECT_EQ(namesOf(removalsDueNow(snapshot, age(30), conditions)), "old");
  conditions.now = conditions.now + 0.001;
  EXPECT_EQ(namesOf(removalsDueNow(snapshot, age(30), conditions)), "old new");

  EXPECT_TRUE(upcomingRemovals(snapshot, age(std::nullopt)).empty());
  for (const FolderSnapshot& other :
       {FolderSnapshot{true, true, items}, FolderSnapshot{false, false, items}})
    EXPECT_TRUE(upcomingRemovals(other, age(30)).empty());
}

TEST(Forecast, sortsItemsOfOneDateByNameAsPlanningDoes) {
  const std::vector<Item> items = {item("b", 5), item("\u00e9", 5), item("e\u0301", 5),
                                   item("z", 4), item("a", 5)};
  const FolderSnapshot snapshot{true, false, items};
  const RunConditions conditions{Date{1e9}, 500, 1000, {}, {}};
  const std::vector<Upcoming> upcoming = upcomingRemovals(snapshot, age(0));
  EXPECT_EQ(namesOf(upcoming), "z a b e\u0301 \u00e9");
  EXPECT_EQ(namesOf(upcoming), namesOf(removalsDueNow(snapshot, age(0), conditions)));

  // These two differ by less than a double can tell so far from zero.
  const FolderSnapshot close{true, false, {{item("b", 1.0), item("a", 1.0000000000000002)}}};
  EXPECT_EQ(namesOf(upcomingRemovals(close, age(90))), "a b");
}

}  // namespace
}  // namespace tidemar::testing
