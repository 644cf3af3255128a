#include "TidemarKit/Engine/Failure.h"
#include "TidemarUI/State/DayWords.h"
#include "TidemarUI/State/FailureLine.h"
#include "TidemarUI/State/FolderTexts.h"
#include "TidemarUI/State/ForecastRows.h"
#include "TidemarUI/State/SetupState.h"
#include "TidemarUI/State/TomorrowNotification.h"
#include "tests/TidemarUI/Samples.h"

namespace tidemar::testing {
namespace {

TEST(DayWords, FollowTheMidnightsOfTheUsersZone) {
  const struct {
    const char* name;
    const char* zone;
    Date now;
    Date date;
    const char* phrase;
    const char* title;
  } rows[] = {
      {"the last minute of today", "UTC", utc(2026, 11, 18), utc(2026, 11, 18, 23, 59), "today",
       "Today"},
      {"over midnight", "UTC", utc(2026, 11, 18, 23, 59), utc(2026, 11, 19), "tomorrow",
       "Tomorrow"},
      {"behind tomorrow", "UTC", utc(2026, 11, 18, 23, 59), utc(2026, 11, 20), "in 2 days",
       "Fri, Nov 20"},
      {"a past day", "UTC", utc(2026, 11, 18, 12), utc(2026, 9, 1), "today", "Today"},
      {"in the east", "Asia/Tokyo", utc(2026, 11, 18, 12), utc(2026, 11, 19, 15), "in 2 days",
       "Fri, Nov 20"},
      {"in the west", "America/Los_Angeles", utc(2026, 11, 18, 23), utc(2026, 11, 19, 7, 59),
       "today", "Today"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const Formats formats("en_US", row.zone);
    EXPECT_EQ(dayPhrase(row.date, row.now, formats.calendar()), row.phrase);
    EXPECT_EQ(dayTitle(row.date, row.now, formats), row.title);
    // The two ways of counting days must agree.
    const std::int64_t distance = dayDistance(row.date, row.now, formats.calendar());
    for (std::int64_t other = distance - 1; other <= distance + 1; ++other) {
      EXPECT_EQ(DayAtDistance(other, row.now, formats.calendar()).contains(row.date),
                other == distance);
    }
  }
  // A date that can't be counted reads as today.
  const Date never{std::numeric_limits<double>::quiet_NaN()};
  const Calendar calendar("UTC");
  EXPECT_EQ(dayPhrase(never, utc(2026, 11, 18), calendar), "today");
  EXPECT_TRUE(DayAtDistance(0, utc(2026, 11, 18), calendar).contains(never));
  EXPECT_FALSE(DayAtDistance(1, utc(2026, 11, 18), calendar).contains(never));
}

constexpr auto bin = Disposal::bin;

TEST(RulesText, ListsTheRulesThatAreOn) {
  const struct {
    TemporarySettings settings;
    const char* text;
  } rows[] = {
      {{{}, {}, false, false, bin}, "No rules on"},
      {{1, {}, false, false, bin}, "1 days · Trash"},
      {{{}, 5'000'000'000, false, false, bin}, "Under 5 GB · Trash"},
      {{7, 0, true, true, Disposal::delete_},
       "7 days, under Zero kB, when disk is low, on restart · Delete"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(rulesText(row.settings, sampleFormats(), "Trash"), row.text);
}

TEST(DistanceText, IsDecidedByTheFirstRuleThatApplies) {
  const Date now = utc(2026, 11, 16, 12);
  const TemporarySettings everything = {30, 10'000'000'000, true, true, Disposal::delete_};
  const TemporarySettings restartAndDisk = {{}, {}, true, true, bin};
  const std::vector<GoingItem> upcoming = {going("a", utc(2026, 11, 18), 2'000'000),
                                           going("b", utc(2026, 11, 17), 500'000)};
  const FolderStatus empty = taggedStatus({}, {});
  const FolderStatus undated = taggedStatus({}, {}, {sampleItem("a")});
  FolderStatus untagged = taggedStatus({sampleItem("a")}, upcoming);
  untagged.isTagged = false;
  const struct {
    TemporarySettings settings;
    std::optional<FolderStatus> status;
    const char* text;
  } rows[] = {
      {everything, std::nullopt, "Can't read this folder"},
      {everything, untagged, "Off"},
      {everything, taggedStatus({sampleItem("a")}, upcoming), "1 item goes now"},
      {everything, taggedStatus({}, upcoming), "2.5 MB of 10 GB"},
      {everything, empty, "Zero kB of 10 GB"},
      {{30, {}, true, true, bin}, taggedStatus({}, upcoming), "Oldest goes in 2 days"},
      {restartAndDisk, undated, "Clears on restart"},
      {restartAndDisk, empty, "Clears when disk is low"},
      {clearingOnRestart(noRules()), empty, "Nothing to clear"},
      {noRules(), undated, "Nothing to clear"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(distanceText(sampleReport(1, row.status, row.settings), now, sampleFormats()),
              row.text);
  }
}

TEST(ForecastRows, NameTheFirstTwoItems) {
  const struct {
    std::vector<FileURL> items;
    const char* summary;
    const char* names;
  } rows[] = {
      {{FileURL("/a")}, "1 item · 12 kB", "a"},
      {{FileURL("/a"), FileURL("/caf\xE9")}, "2 items · 12 kB", "a, caf\uFFFD"},
      {{FileURL("/a"), FileURL("/b"), FileURL("/c")}, "3 items · 12 kB", "a, b and 1 more"},
  };
  for (const auto& row : rows) {
    ForecastGroup group;
    group.items = row.items;
    group.totalSize = "12 kB";
    EXPECT_EQ(rowSummary(group), row.summary);
    EXPECT_EQ(rowNames(group), row.names);
  }
}

TEST(ForecastRows, StandInASectionForEachActionInTurn) {
  EXPECT_TRUE(forecastSections({}).empty());
  std::vector<ForecastGroup> groups;
  for (const char* action : {"b", "b", "D", "b"}) {
    groups.emplace_back().action = action;
    groups.back().isPermanent = groups.back().action == "D";
  }
  std::string drawn;
  for (const ForecastSection& section : forecastSections(groups)) {
    drawn += section.title + std::to_string(section.groups.size()) + " ";
    EXPECT_EQ(section.isPermanent, section.title == "D");
  }
  EXPECT_EQ(drawn, "b2 D1 b1 ") << "only neighbours stand together";
}

TEST(FailureLine, NamesWhatItIsAboutWhateverItsBytes) {
  const auto line = [](EngineFailure::Case failure) {
    return failureLine(EngineFailure(std::move(failure)), "Trash");
  };
  EXPECT_EQ(line(EngineFailure::ChangedSincePlanned{"/data/caf\xE9"}),
            "caf\uFFFD changed, so it was left alone.");
  EXPECT_EQ(line(EngineFailure::OriginalPathTaken{"/data/Old/notes.txt"}),
            "Something new is already called notes.txt in Old, so it was left in the Trash.");
  EXPECT_EQ(line(EngineFailure::GoneFromBin{"/trash/a"}), "An item is no longer in the Trash.");
  EXPECT_EQ(failureLine(std::runtime_error("Couldn't read “a\xFF”."), "Trash"),
            "Couldn't read “a\uFFFD”.");
}

TEST(FailureLine, AnItemThatStayedIsNamedByItsName) {
  const auto line = [](const std::exception& error) {
    return leftItemLine("/data/old", error, "Bin");
  };
  EXPECT_EQ(line(PlatformError("remove", FileURL("/data/old"), EPERM)),
            "old: couldn't remove: Operation not permitted.");
  EXPECT_EQ(line(PlatformError("remove", FileURL("/data/old/part"), EPERM)),
            "old: couldn't remove part: Operation not permitted.");
  EXPECT_EQ(line(std::runtime_error("No room.")), "old: No room.");
  EXPECT_EQ(line(EngineFailure(EngineFailure::ChangedSincePlanned{"/data/old"})),
            "old changed, so it was left alone.");
}

TEST(SetupState, OffersWhatIsNotDoneYet) {
  using enum SetupOffer;
  const struct {
    const char* name;
    SetupState state;  // Extension, login item, its approval, notifications.
    std::array<bool, 3> done;
    std::array<SetupOffer, 3> offers;
  } rows[] = {
      {"nothing done",
       {false, false, false, false},
       {false, false, false},
       {openExtensionManagement, enableAtLogin, requestNotifications}},
      {"all done", {true, true, false, true}, {true, true, true}, {none, none, none}},
      {"the login item waits for approval",
       {true, false, true, true},
       {true, false, true},
       {none, openLoginItemsSettings, none}},
      {"on, and still waiting for approval",
       {true, true, true, true},
       {true, true, true},
       {none, openLoginItemsSettings, none}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const auto steps = setupSteps(row.state);
    for (std::size_t i = 0; i < steps.size(); ++i) {
      EXPECT_EQ(steps[i].isDone, row.done[i]) << i;
      EXPECT_EQ(steps[i].offer, row.offers[i]) << i;
      EXPECT_EQ(steps[i].offerTitle.empty(), steps[i].offer == none) << i;
    }
    EXPECT_EQ(steps[0].hint.empty(), row.done[0]);
    EXPECT_TRUE(steps[2].hint.empty());
    SetupState refused = row.state;
    refused.wereNotificationsRefused = true;
    EXPECT_EQ(setupSteps(refused)[2].hint.empty(), row.done[2]) << "what is missing is told";
  }
}

TEST(TomorrowNotification, TellsWhatGoesOnTheUsersTomorrow) {
  // 00:30 on the 17th in Berlin, where tomorrow is the 18th; UTC still has the 16th.
  const Date now = utc(2026, 11, 16, 23, 30);
  const GoingItem today = going("today", utc(2026, 11, 17, 22, 59));
  const GoingItem first = going("first", utc(2026, 11, 17, 23));
  const GoingItem last = going("last", utc(2026, 11, 18, 22, 59));
  const GoingItem after = going("after", utc(2026, 11, 18, 23));
  const FolderStatus one = taggedStatus({first.item}, {first});
  const FolderStatus two = taggedStatus({}, {today, first, last, after});
  const struct {
    const char* name;
    FolderReport report;
    const char* body;  // Null where nothing is told.
  } rows[] = {
      {"one item, though it is due by now", sampleReport(12, one),
       "1 item will go to the Trash tomorrow."},
      {"any time of tomorrow", sampleReport(12, two), "2 items will go to the Trash tomorrow."},
      {"deleting", sampleReport(12, two, deleting()),
       "2 items will be deleted permanently tomorrow."},
      {"today and later alone", sampleReport(12, taggedStatus({}, {today, after})), nullptr},
      {"unreadable", sampleReport(12, std::nullopt), nullptr},
      {"without an id", sampleReport(std::nullopt, one), nullptr},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const auto told = tomorrowNotification(row.report, now, Calendar("Europe/Berlin"), "Trash");
    ASSERT_EQ(told.has_value(), row.body != nullptr);
    EXPECT_TRUE(!told || mayGoTomorrow(row.report, now));
    if (told) {
      EXPECT_EQ(*told, (TomorrowNotification{"tomorrow.12", "Downloads", row.body}));
      EXPECT_EQ(folderOfNotification(told->identifier), 12);
    }
  }
  for (const char* other : {"tomorrow.", "tomorrow.1x", "background", "12"})
    EXPECT_EQ(folderOfNotification(other), std::nullopt);
  EXPECT_FALSE(
      mayGoTomorrow(sampleReport(1, taggedStatus({}, {going("a", utc(2026, 11, 20))})), now));
  // Within one day of the user's the stamp changes at UTC's midnight.
  EXPECT_EQ(notificationStamp(now + 1799), "2026-11-16");
  EXPECT_EQ(notificationStamp(now + 1800), "2026-11-17");
  EXPECT_EQ(notificationStamp(utc(2027, 1, 2) - 0.001), "2027-01-01");
}

}  // namespace
}  // namespace tidemar::testing
