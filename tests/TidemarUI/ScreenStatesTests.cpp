#include "TidemarUI/State/FolderPreview.h"
#include "TidemarUI/State/Headlines.h"
#include "TidemarUI/State/MainState.h"
#include "tests/TidemarUI/Samples.h"

namespace tidemar::testing {
namespace {

constexpr Date now = utc(2026, 11, 16, 12);

FolderStatus untaggedStatus() {
  FolderStatus status = taggedStatus({}, {}, {sampleItem("a")});
  status.isTagged = false;
  return status;
}

MainState stateOf(const std::vector<FolderReport>& reports,
                  const std::vector<JournalEntry>& journal = {}) {
  return mainState(reports, journal, 250'000'000'000, true, now, sampleFormats(), "Bin");
}

TEST(MenuBarState, SumsUpTheFoldersThatAreTemporaryOrUnreadable) {
  const FolderStatus dueOnce = taggedStatus({sampleItem("a")}, {});
  const GoingItem tomorrow = going("d", now + secondsPerDay);
  const FolderStatus today =
      taggedStatus({}, {going("b", now + 3600), going("c", now + 7200), tomorrow});
  const FolderReport restarting = sampleReport(1, untaggedStatus(), clearingOnRestart());
  const struct {
    const char* name;
    std::vector<FolderReport> reports;
    const char* headline;
    const char* subheadline;
    std::size_t rowCount;
    std::size_t groupCount;
  } rows[] = {
      {"all folders off",
       {restarting},
       "No Temporary folders yet",
       "0 folders · 250 GB free",
       0,
       0},
      {"one that can't be read",
       {sampleReport(1, {})},
       "Nothing goes today",
       "1 folder · 250 GB free",
       1,
       0},
      {"due items of all folders",
       {sampleReport(1, dueOnce), sampleReport(2, dueOnce)},
       "2 items go now",
       "2 folders · 250 GB free",
       2,
       1},
      {"items of today of all folders",
       {sampleReport(1, today), sampleReport(2, today)},
       "4 items go today",
       "2 folders · 250 GB free",
       2,
       2},
      {"one item of today",
       {sampleReport(1, taggedStatus({}, {going("b", now + 60), tomorrow}))},
       "1 item goes today",
       "1 folder · 250 GB free",
       1,
       2},
      {"items of tomorrow alone",
       {sampleReport(1, taggedStatus({}, {tomorrow}))},
       "1 item goes tomorrow",
       "1 folder · 250 GB free",
       1,
       1},
      {"a folder without an id counts, but has no row",
       {sampleReport(std::nullopt, dueOnce)},
       "1 item goes now",
       "1 folder · 250 GB free",
       0,
       1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const MenuBarState state = stateOf(row.reports).overview;
    EXPECT_EQ(state.headline, row.headline);
    EXPECT_EQ(state.subheadline, row.subheadline);
    EXPECT_EQ(state.folders.size(), row.rowCount);
    EXPECT_EQ(state.forecast.size(), row.groupCount);
    const bool hasRows = row.rowCount > 0;
    EXPECT_EQ(menuBarBlocks(state),
              (MenuBarBlocks{true, !hasRows, hasRows && row.groupCount > 0, hasRows, false}));
  }
}

TEST(MenuBarState, KeepsTheOrderAndDescribesEachFolder) {
  JournalEntry entry;
  entry.id = 1;
  entry.folderID = 3;
  const MenuBarState state =
      stateOf({sampleReport(5, taggedStatus({}, {going("a", now + secondsPerDay)}), {}, "/b/zeta"),
               sampleReport(3, untaggedStatus(), {}, "/data/off"),
               sampleReport(4, std::nullopt, deleting(), "/data/M\xFCll"),
               sampleReport(2, std::nullopt, {}, "/a/zeta")},
              {entry})
          .overview;
  EXPECT_EQ(state.folders,
            (std::vector<FolderSummary>{
                {5, "/b/zeta", "zeta", "90 days · Bin", "Oldest goes tomorrow", "/b/zeta"},
                {4, "/data/M\xFCll", "M\uFFFDll", "90 days · Delete", "Can't read this folder", ""},
                {2, "/a/zeta", "zeta", "90 days · Bin", "Can't read this folder", "/a/zeta"}}));
  ASSERT_EQ(state.recentRuns.size(), 1u);
  EXPECT_TRUE(menuBarBlocks(state).hasRecentRuns);
  EXPECT_TRUE(state.recentRuns[0].detail.starts_with("off · ")) << "though it lost its tag";
}

TEST(MainState, ListsEveryFolderWithAnId) {
  FolderStatus protectedStatus = taggedStatus({}, {});
  protectedStatus.isProtectedRoot = true;
  const MainState state =
      stateOf({sampleReport(2, taggedStatus({sampleItem("a")}, {}), {}, "/data/b"),
               sampleReport(1, untaggedStatus(), deleting(), "/data/a"),
               sampleReport(3, std::nullopt, {}, "/data/c"),
               sampleReport(std::nullopt, taggedStatus({}, {})),
               sampleReport(4, protectedStatus, {}, "/home/ada")});
  std::vector<std::string> drawn;
  for (const MainFolder& folder : state.folders) {
    drawn.push_back(folder.name + (folder.isTemporary ? " T" : "") +
                    (folder.isProtectedRoot ? " P" : "") + (folder.isReadable ? " R" : "") + " | " +
                    folder.distanceToGoing + " | " + folder.preview.headline);
  }
  EXPECT_EQ(drawn,
            (std::vector<std::string>{"b T R | 1 item goes now | 1 item goes now",
                                      "a R | Off | Nothing goes this week.",
                                      "c | Can't read this folder | Can't read this folder",
                                      "ada T P R | Nothing to clear | Nothing goes this week."}));
  EXPECT_EQ(state.folders.at(1).settings, deleting());
}

TEST(MainState, InvitesOnlyWithoutAnyFolder) {
  const MainState state = stateOf({sampleReport(7, untaggedStatus())});
  // Those that are off still stand in the sidebar.
  JournalEntry entry;
  entry.id = 1;
  const FolderStatus due = taggedStatus({sampleItem("a")}, {});
  EXPECT_EQ(overviewBlocks(state), (OverviewBlocks{false, false, false}));
  EXPECT_EQ(overviewBlocks(stateOf({sampleReport(7, due)}, {entry})),
            (OverviewBlocks{false, true, true}));
  EXPECT_EQ(overviewBlocks(stateOf({sampleReport(std::nullopt, due)}, {entry})),
            (OverviewBlocks{true, false, false}));
}

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
