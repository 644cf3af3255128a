#include "TidemarUI/State/FolderTexts.h"
#include "tests/TidemarUI/Samples.h"

namespace tidemar::testing {
namespace {

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

}  // namespace
}  // namespace tidemar::testing
