#include <optional>

#include <gtest/gtest.h>

#include "TidemarUI/State/FolderTexts.h"
#include "tests/TidemarUI/Samples.h"
#include "tests/support/Dates.h"

namespace tidemar {
namespace {

using namespace testing;

TemporarySettings settings(std::optional<std::int64_t> maxAgeDays,
                           std::optional<std::int64_t> sizeLimit, bool automatic,
                           bool emptyOnRestart, Disposal disposal) {
  return {maxAgeDays, sizeLimit, automatic, emptyOnRestart, disposal};
}

TEST(RulesText, ListsTheRulesThatAreOn) {
  constexpr auto bin = Disposal::bin;
  constexpr auto delete_ = Disposal::delete_;
  struct Row {
    TemporarySettings settings;
    const char* text;
  };
  const Row rows[] = {
      {settings({}, {}, false, false, bin), "No rules on"},
      {settings({}, {}, false, false, delete_), "No rules on"},
      {settings(90, {}, false, false, bin), "90 days · Trash"},
      {settings(1, {}, false, false, bin), "1 days · Trash"},
      {settings(3650, {}, false, false, bin), "3650 days · Trash"},
      {settings({}, 5'000'000'000, false, false, bin), "Under 5 GB · Trash"},
      {settings({}, {}, true, false, delete_), "When disk is low · Delete"},
      {settings({}, {}, true, false, bin), "When disk is low · Trash"},
      {settings({}, {}, false, true, bin), "On restart · Trash"},
      {settings(30, 5'000'000'000, false, true, bin), "30 days, under 5 GB, on restart · Trash"},
      {settings(7, 0, true, true, delete_),
       "7 days, under Zero kB, when disk is low, on restart · Delete"},
  };
  for (const Row& row : rows)
    EXPECT_EQ(rulesText(row.settings, sampleFormats(), "Trash"), row.text);
}

TEST(DistanceText, IsDecidedByTheFirstRuleThatApplies) {
  const Date now = utc(2026, 11, 16, 12);
  constexpr auto bin = Disposal::bin;
  const TemporarySettings everything = settings(30, 10'000'000'000, true, true, Disposal::delete_);
  const std::vector<GoingItem> upcoming = {going("a", utc(2026, 11, 18), 2'000'000),
                                          going("b", utc(2026, 11, 17), 500'000)};
  const std::vector<Item> items = {sampleItem("a")};
  struct Row {
    const char* name;
    TemporarySettings settings;
    std::optional<FolderStatus> status;
    const char* text;
  };
  const FolderStatus untagged = [&] {
    FolderStatus status = taggedStatus({due("a")}, upcoming);
    status.isTagged = false;
    return status;
  }();
  const Row rows[] = {
      {"unreadable", everything, std::nullopt, "Can't read this folder"},
      {"no longer tagged, whatever was planned", everything, untagged, "Off"},
      {"one due, before the size", everything, taggedStatus({due("a")}, upcoming),
       "1 item goes now"},
      {"two due", everything, taggedStatus({due("a"), due("b")}, {}), "2 items go now"},
      {"a size limit, before any date", everything, taggedStatus({}, upcoming), "2.5 MB of 10 GB"},
      {"a size limit on an empty folder", everything, taggedStatus({}, {}), "Zero kB of 10 GB"},
      {"restart with items, before the disk", settings({}, {}, true, true, bin),
       taggedStatus({}, {}, items), "Clears on restart"},
      {"restart without items", settings({}, {}, false, true, bin), taggedStatus({}, {}),
       "Nothing to clear"},
      {"disk rule", settings({}, {}, true, false, bin), taggedStatus({}, {}, items),
       "Clears when disk is low"},
      {"restart without items, then disk", settings({}, {}, true, true, bin), taggedStatus({}, {}),
       "Clears when disk is low"},
      {"no rule", settings({}, {}, false, false, bin), taggedStatus({}, {}, items),
       "Nothing to clear"},
      {"a date, before restart and disk; the first as it stands", settings(30, {}, true, true, bin),
       taggedStatus({}, upcoming), "Oldest goes in 2 days"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(distanceText(sampleReport(1, row.status, row.settings), now, sampleFormats()),
              row.text)
        << row.name;
  }
}

}  // namespace
}  // namespace tidemar
