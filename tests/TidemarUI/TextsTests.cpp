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
    const char* zone;
    Date now;
    Date date;
    const char* words;
  } rows[] = {
      {"UTC", utc(2026, 11, 18), utc(2026, 11, 18, 23, 59), "today, Today"},
      {"UTC", utc(2026, 11, 18, 23, 59), utc(2026, 11, 19), "tomorrow, Tomorrow"},
      {"UTC", utc(2026, 11, 18, 23, 59), utc(2026, 11, 20), "in 2 days, Fri, Nov 20"},
      {"UTC", utc(2026, 11, 18, 12), utc(2026, 9, 1), "today, Today"},
      {"Asia/Tokyo", utc(2026, 11, 18, 12), utc(2026, 11, 19, 15), "in 2 days, Fri, Nov 20"},
      {"America/Los_Angeles", utc(2026, 11, 18, 23), utc(2026, 11, 19, 7, 59), "today, Today"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.words);
    const Formats formats("en_US", row.zone);
    EXPECT_EQ(dayPhrase(row.date, row.now, formats.calendar()) + ", " +
                  dayTitle(row.date, row.now, formats),
              row.words);
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
  ForecastGroup group;
  group.totalSize = "12 kB";
  for (const auto& [added, text] : {std::pair{"/a", "1 item · 12 kB: a"},
                                    {"/caf\xE9", "2 items · 12 kB: a, caf\uFFFD"},
                                    {"/c", "3 items · 12 kB: a, caf\uFFFD and 1 more"}}) {
    group.items.emplace_back(added);
    EXPECT_EQ(rowSummary(group) + ": " + rowNames(group), text);
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

  const auto left = [](const std::exception& error) {
    return leftItemLine("/data/old", error, "Bin");
  };
  EXPECT_EQ(left(PlatformError("remove", FileURL("/data/old"), EPERM)),
            "old: couldn't remove: Operation not permitted.");
  EXPECT_EQ(left(PlatformError("remove", FileURL("/data/old/part"), EPERM)),
            "old: couldn't remove part: Operation not permitted.");
  EXPECT_EQ(left(std::runtime_error("No room.")), "old: No room.");
  EXPECT_EQ(left(EngineFailure(EngineFailure::ChangedSincePlanned{"/data/old"})),
            "old changed, so it was left alone.");
}

TEST(SetupState, OffersWhatIsNotDoneYet) {
  const std::map<std::string_view, SetupOffer> offers = {
      {"", SetupOffer::none},
      {"Open Extension Settings…", SetupOffer::openExtensionManagement},
      {"Open Login Items…", SetupOffer::openLoginItemsSettings},
      {"Enable at Login", SetupOffer::enableAtLogin},
      {"Allow Notifications", SetupOffer::requestNotifications}};
  const std::pair<SetupState, const char*> rows[] = {
      // Extension, login item, its approval, notifications, their refusal. With a hint: *.
      {{false, false, false, false, false},
       "Open Extension Settings…*, Enable at Login, Allow Notifications, "},
      {{true, true, false, true, true}, "done , done , done , "},
      {{true, false, true, true, false}, "done , Open Login Items…, done , "},
      {{true, true, true, false, true}, "done , done Open Login Items…, Allow Notifications*, "},
  };
  for (const auto& [state, expected] : rows) {
    std::string drawn;
    for (const SetupStep& step : setupSteps(state)) {
      drawn += (step.isDone ? "done " : "") + std::string(step.offerTitle) +
               (step.hint.empty() ? ", " : "*, ");
      EXPECT_EQ(step.offer, offers.at(step.offerTitle));
    }
    EXPECT_EQ(drawn, expected);
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
  const auto told = [](std::string body) {
    return std::optional<TomorrowNotification>({"tomorrow.12", "Downloads", std::move(body)});
  };
  const std::pair<FolderReport, std::optional<TomorrowNotification>> rows[] = {
      // One item, though it is due by now; any time of tomorrow; deleted.
      {sampleReport(12, one), told("1 item will go to the Trash tomorrow.")},
      {sampleReport(12, two), told("2 items will go to the Trash tomorrow.")},
      {sampleReport(12, two, deleting()), told("2 items will be deleted permanently tomorrow.")},
      // Today and later alone; unreadable; without an id.
      {sampleReport(12, taggedStatus({}, {today, after})), {}},
      {sampleReport(12, std::nullopt), {}},
      {sampleReport(std::nullopt, one), {}},
  };
  for (const auto& [report, expected] : rows) {
    EXPECT_EQ(tomorrowNotification(report, now, Calendar("Europe/Berlin"), "Trash"), expected);
    EXPECT_TRUE(!expected || mayGoTomorrow(report, now));
  }
  EXPECT_EQ(folderOfNotification("tomorrow.12"), 12);
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
