#include "TidemarUI/State/FolderPreview.h"
#include "TidemarUI/State/Headlines.h"
#include "tests/TidemarUI/Samples.h"

namespace tidemar::testing {
namespace {

constexpr Date now = utc(2026, 11, 16, 12);

TEST(CountOnDay, CountsTheExactDayWithoutWhatIsDue) {
  const FolderStatus first =
      taggedStatus({sampleItem("due")},
                   {going("past", utc(2026, 11, 15)), going("due", utc(2026, 11, 16, 1)),
                    going("earlier today", utc(2026, 11, 16)),
                    going("late", utc(2026, 11, 16, 23, 59)), going("next", utc(2026, 11, 17))});
  // What is due in one folder says nothing of a like-named item's entry in another.
  const FolderStatus second = taggedStatus({}, {going("due", utc(2026, 11, 16, 13))});
  const std::vector<const FolderStatus*> statuses = {&first, &second};
  const Calendar calendar("UTC");
  EXPECT_EQ(countOnDay(0, statuses, now, calendar), 3);
  EXPECT_EQ(countOnDay(1, statuses, now, calendar), 1);
  EXPECT_EQ(countOnDay(2, statuses, now, calendar), 0);
}

TEST(FolderPreview, HeadlineTellsTheWeek) {
  const Date tomorrow = utc(2026, 11, 17);
  const Date inNineDays = utc(2026, 11, 25, 3);
  const struct {
    const char* name;
    TemporarySettings settings;
    std::optional<FolderStatus> status;
    const char* headline;
    std::size_t groupCount;
  } rows[] = {
      {"unreadable", clearingOnRestart(), std::nullopt, "Can't read this folder", 0},
      {"two due, and more behind the week",
       {},
       taggedStatus({sampleItem("a"), sampleItem("b")}, {going("c", inNineDays)}),
       "2 items go now",
       1},
      {"two due and three more in the week are one number",
       {},
       taggedStatus({sampleItem("a"), sampleItem("b")},
                    {going("c", tomorrow), going("d", tomorrow), going("e", utc(2026, 11, 22))}),
       "5 items go this week",
       3},
      {"the first upcoming item is told, with no search for the earliest",
       {},
       taggedStatus({}, {going("b", utc(2026, 12, 1)), going("a", inNineDays)}),
       "Nothing goes this week. The oldest item goes in 15 days.",
       0},
      {"the restart doesn't count, but is listed", clearingOnRestart(noRules()),
       taggedStatus({}, {}, {sampleItem("a")}), "Nothing goes this week.", 1},
      {"due items beside those of the restart", clearingOnRestart(),
       taggedStatus({sampleItem("a")}, {}, {sampleItem("b")}), "1 item goes now", 2},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const FolderPreview preview =
        folderPreview(sampleReport(1, row.status, row.settings), now, sampleFormats(), "Bin");
    EXPECT_EQ(preview.headline, row.headline);
    EXPECT_EQ(preview.forecast.size(), row.groupCount);
  }
}

}  // namespace
}  // namespace tidemar::testing
