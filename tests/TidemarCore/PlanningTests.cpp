#include "TidemarCore/Forecast.h"
#include "TidemarCore/RemovalPlanning.h"
#include "support/Testing.h"

namespace tidemar::testing {
namespace {

constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
constexpr double now = 1'000'000'000;

/// Items as words "name@time/size", the time in seconds from now; without a time it has no date.
std::vector<Item> items(const std::string& text) {
  std::vector<Item> result;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    const std::size_t at = word.find('@');
    const std::size_t slash = word.find('/');
    const std::int64_t size = slash == word.npos ? 0 : std::stoll(word.substr(slash + 1));
    const auto date =
        at == word.npos ? std::optional<double>() : now + std::stod(word.substr(at + 1));
    result.push_back(item(word.substr(0, std::min(at, slash)), date, size));
  }
  return result;
}

/// Settings with these rules on and no other, as words "age=7 size=100 automatic restart bin".
TemporarySettings rules(const std::string& text) {
  TemporarySettings result{std::nullopt, std::nullopt, false, false, Disposal::delete_};
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    if (word.starts_with("age=")) result.maxAgeDays = std::stoll(word.substr(4));
    if (word.starts_with("size=")) result.sizeLimit = std::stoll(word.substr(5));
    if (word == "automatic") result.automatic = true;
    if (word == "restart") result.emptyOnRestart = true;
    if (word == "bin") result.disposal = Disposal::bin;
  }
  return result;
}

/// Each removal as its name and the first letters of its reasons, with d for the disk: "a:as" went
/// by age and size.
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
  std::string items;
  std::string rules;
  const char* expected;
  std::int64_t available = 500;
  std::int64_t total = 1000;
  double lastRun = -200;  ///< In seconds from now, as the start, which was at -100.
};

const std::string three = "c@-1/10 a@-3/10 b@-2/10";
const std::string mostBytes = std::to_string(most);

const Case cases[] = {
    {"with no rule on nothing goes", "a@-9e8/100", "", "", 0},
    {"of an empty folder nothing goes", "", "age=0 size=0 automatic restart", ""},

    {"an item of exactly the age stays", "a@-604800", "age=7", ""},
    {"an item older by a fraction of a second goes", "a@-604800.000001", "age=7", "a:a"},
    {"at 0 days what is older than now goes", "now@0 before@-0.001 later@5", "age=0", "before:a"},
    {"a negative age reaches into the future", "a@43200", "age=-1", "a:a"},
    {"an age beyond all dates takes nothing", "a@-1e9", "age=" + mostBytes, ""},
    {"an item without a date doesn't go by age", "a", "age=0", ""},
    {"the oldest goes first", three, "age=0", "a:a b:a c:a"},

    {"a folder at its limit loses nothing", three, "size=30", ""},
    {"a folder one byte over loses its oldest item", three, "size=29", "a:s"},
    {"reaching the limit exactly is enough", three, "size=10", "a:s b:s"},
    {"of equal dates the first name goes", "b@-5/10 a@-5/10", "size=19", "a:s"},
    {"an item of no size is taken on the way", "0@-3/0 a@-2/10 b@-1/10", "size=10", "0:s a:s"},
    {"items without a date never go, however far over", "a/100 b/100", "size=1", ""},
    {"one without a date pushes out the others", "x/99 b@-1/9 a@-2/9", "size=1", "a:s b:s"},
    {"sizes beyond the range count as the end of it", "a@-2/" + mostBytes + " b@-1/" + mostBytes,
     "size=" + std::to_string(most - 1), "a:s"},
    {"the lowest limit takes everything", "a@-2/" + mostBytes + " b@-1/0",
     "size=" + std::to_string(std::numeric_limits<std::int64_t>::min()), "a:s"},

    {"a disk with exactly a tenth free is left alone", three, "automatic", "", 100},
    {"a disk one byte short gets its tenth back", three, "automatic", "a:d", 99},
    {"the tenth is rounded up", three, "automatic", "a:d", 100, 1001},
    {"what was rounded up is enough", three, "automatic", "", 101, 1001},
    {"a move to the Bin frees no disk", three, "automatic bin", "", 0},
    {"a total at the end of the range", three, "automatic", "a:d b:d c:d", 0, most},

    {"what was there at the start goes, what came at it stays", "at@-100 a@-100.5 b@-99 c",
     "restart", "a:e"},
    {"without a restart since the last run nothing goes", "a@-200", "restart", "", 500, 1000, -99},
    {"a run at the very start counts as after it", "a@-200", "restart", "", 500, 1000, -100},

    {"each item carries every rule that reaches it", "a@-777600/10 b@-691200/10 c@-86400/10 d@0/10",
     "age=7 size=10", "a:as b:as c:s"},
    {"all four rules can take one item", "a@-101/10", "age=0 size=0 automatic restart", "a:asde",
     99},
};

TEST(RemovalPlanning, takesWhatTheRulesSayAndNothingOfAPlainFolderOrAProtectedRoot) {
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const RunConditions conditions{Date{now}, c.available, c.total, Date{now - 100},
                                   Date{now + c.lastRun}};
    const FolderSnapshot snapshot{true, false, items(c.items)};
    EXPECT_EQ(text(removalsDueNow(snapshot, rules(c.rules), conditions)), c.expected);
    const FolderSnapshot untagged{false, false, snapshot.items};
    EXPECT_EQ(text(removalsDueNow(untagged, rules(c.rules), conditions)), "");
    const FolderSnapshot isProtected{true, true, snapshot.items};
    EXPECT_EQ(text(removalsDueNow(isProtected, rules(c.rules), conditions)), "");
  }
}

TEST(Forecast, givesEveryDatedItemTheLastInstantAtWhichItStays) {
  const double freshness = 1'700'000'000.25;
  const std::vector<Item> all = {item("new", freshness), item("undated", std::nullopt),
                                 item("old", freshness - 100 * secondsPerDay)};
  const FolderSnapshot snapshot{true, false, all};
  const std::vector<Upcoming> upcoming = upcomingRemovals(snapshot, rules("age=30"));
  ASSERT_EQ(namesOf(upcoming), "old new");
  EXPECT_EQ(upcoming[0].date, Date{freshness - 70 * secondsPerDay});
  EXPECT_EQ(upcoming[1].date, Date{freshness + 30 * secondsPerDay});
  EXPECT_EQ(upcoming[1].item, &snapshot.items[0]);

  RunConditions conditions{upcoming[1].date, 500, 1000, {}, {}};
  EXPECT_EQ(namesOf(removalsDueNow(snapshot, rules("age=30"), conditions)), "old");
  conditions.now = conditions.now + 0.001;
  EXPECT_EQ(namesOf(removalsDueNow(snapshot, rules("age=30"), conditions)), "old new");

  EXPECT_TRUE(upcomingRemovals(snapshot, rules("")).empty());
  for (const FolderSnapshot& other :
       {FolderSnapshot{true, true, all}, FolderSnapshot{false, false, all}})
    EXPECT_TRUE(upcomingRemovals(other, rules("age=30")).empty());
}

TEST(Forecast, sortsItemsOfOneDateByNameAsPlanningDoes) {
  const std::vector<Item> all = {item("b", 5), item("\u00e9", 5), item("e\u0301", 5), item("z", 4),
                                 item("a", 5)};
  const FolderSnapshot snapshot{true, false, all};
  const RunConditions conditions{Date{1e9}, 500, 1000, {}, {}};
  const std::vector<Upcoming> upcoming = upcomingRemovals(snapshot, rules("age=0"));
  EXPECT_EQ(namesOf(upcoming), "z a b e\u0301 \u00e9");
  EXPECT_EQ(namesOf(upcoming), namesOf(removalsDueNow(snapshot, rules("age=0"), conditions)));
  // These two differ by less than a double can tell so far from zero.
  const FolderSnapshot close{true, false, {{item("b", 1.0), item("a", 1.0000000000000002)}}};
  EXPECT_EQ(namesOf(upcomingRemovals(close, rules("age=90"))), "a b");
}

}  // namespace
}  // namespace tidemar::testing
