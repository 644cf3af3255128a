#include "TidemarUI/State/ForecastGroups.h"
#include "tests/TidemarUI/Samples.h"

namespace tidemar::testing {
namespace {

/// A Monday.
constexpr Date now = utc(2026, 11, 16, 23, 59);

struct SampleFolder {
  TemporarySettings settings;
  FolderStatus status;
  std::vector<LeftItem> left = {};
};

/// Each group as "when | action | names | size".
std::vector<std::string> drawn(const std::vector<SampleFolder>& samples) {
  std::vector<ForecastFolder> folders;
  for (const SampleFolder& sample : samples)
    folders.push_back({sample.settings, sample.status, sample.left});
  std::vector<std::string> lines;
  for (const ForecastGroup& group : forecastGroups(folders, now, sampleFormats(), "Bin")) {
    std::string line = group.when + " | " + group.action + " |";
    for (const FileURL& item : group.items)
      line += " " + std::string(item.lastPathComponent());
    line += " | " + group.totalSize;
    lines.push_back(group.left.empty() ? line : line + " | " + group.left);
    EXPECT_EQ(group.id(), group.when + " · " + group.action);
    EXPECT_EQ(group.isPermanent, group.action == "Delete Permanently");
    EXPECT_EQ(group.isAtRestart, group.when == "On restart");
  }
  return lines;
}

TEST(ForecastGroups, TellWhatGoesWhen) {
  const Date tomorrow = utc(2026, 11, 17, 8);
  const Date wednesday = utc(2026, 11, 18, 8);
  const struct {
    const char* name;
    std::vector<SampleFolder> folders;
    std::vector<std::string> groups;
  } rows[] = {
      {"nothing to list", {{{}, taggedStatus({}, {}, {sampleItem("a")})}}, {}},
      {"the horizon is midnight, whatever the hour is now",
       {{{},
         taggedStatus({}, {going("sunday", utc(2026, 11, 22, 23, 59)),
                           going("monday", utc(2026, 11, 23))})}},
       {"Sun, Nov 22 | Move to Bin | sunday | 1 kB"}},
      {"the restart takes what doesn't go this week",
       {{clearingOnRestart(), taggedStatus({sampleItem("now")},
                                           {going("now", tomorrow), going("tomorrow", tomorrow),
                                            going("later", utc(2026, 11, 26))},
                                           {sampleItem("undated")})}},
       {"Now | Move to Bin | now | 1 kB", "Tomorrow | Move to Bin | tomorrow | 1 kB",
        "On restart | Move to Bin | later undated | 2 kB"}},
      {"all that goes to the Bin stands before all that is deleted",
       {{clearingOnRestart(deleting()),
         taggedStatus({sampleItem("d1")}, {going("d2", tomorrow)}, {sampleItem("d3")})},
        {clearingOnRestart(),
         taggedStatus({sampleItem("b1")}, {going("b2", wednesday)}, {sampleItem("b3")})}},
       {"Now | Move to Bin | b1 | 1 kB", "Wed, Nov 18 | Move to Bin | b2 | 1 kB",
        "On restart | Move to Bin | b3 | 1 kB", "Now | Delete Permanently | d1 | 1 kB",
        "Tomorrow | Delete Permanently | d2 | 1 kB",
        "On restart | Delete Permanently | d3 | 1 kB"}},
      {"folders that go in the same way on the same day stand together",
       {{{}, taggedStatus({}, {going("z", utc(2026, 11, 18, 22), 2'000'000)})},
        {{}, taggedStatus({}, {going("a", utc(2026, 11, 18, 1)), going("b", tomorrow)})}},
       {"Tomorrow | Move to Bin | b | 1 kB", "Wed, Nov 18 | Move to Bin | z a | 2 MB"}},
      {"what the last run left says why, as long as it is to go now",
       {{{},
         taggedStatus({sampleItem("a"), sampleItem("b")}, {going("c", tomorrow)}),
         {{sampleItem("b").url, "b: no."}, {sampleItem("c").url, "c: no."}}},
        {{}, taggedStatus({sampleItem("d")}, {}), {{sampleItem("d").url, "d: no."}}}},
       {"Now | Move to Bin | a b d | 3 kB | b: no.\nd: no.", "Tomorrow | Move to Bin | c | 1 kB"}},
      {"a past day that isn't due yet reads as today",
       {{{}, taggedStatus({}, {going("a", utc(2026, 11, 10))})}},
       {"Today | Move to Bin | a | 1 kB"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(drawn(row.folders), row.groups);
  }
}

TEST(ForecastGroups, CutTheWeekInTheUsersZone) {
  // Monday 23:59 in Tokyo; daylight saving ends in New York within the week.
  const Calendar tokyo("Asia/Tokyo");
  const Calendar newYork("America/New_York");
  EXPECT_EQ(forecastHorizon(utc(2026, 11, 16, 14, 59), tokyo), utc(2026, 11, 22, 15));
  EXPECT_EQ(forecastHorizon(utc(2026, 10, 27, 3, 59), newYork), utc(2026, 11, 2, 5));
  EXPECT_EQ(forecastHorizon(utc(2026, 3, 3, 4, 59), newYork), utc(2026, 3, 9, 4));
}

}  // namespace
}  // namespace tidemar::testing
