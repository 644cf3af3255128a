#include "TidemarUI/State/FolderPreview.h"
#include "TidemarUI/State/Headlines.h"
#include "TidemarUI/State/MainState.h"
#include "tests/TidemarUI/Samples.h"

namespace tidemar::testing {
namespace {

constexpr Date now = utc(2026, 11, 16, 12);

const FolderStatus dueOnce = taggedStatus({sampleItem("a")}, {});

FolderStatus untaggedStatus() {
  FolderStatus status = taggedStatus({}, {}, {sampleItem("a")});
  status.isTagged = false;
  return status;
}

JournalEntry entryOfFolder(std::int64_t id) {
  JournalEntry entry;
  entry.id = 1;
  entry.folderID = id;
  return entry;
}

MainState stateOf(const std::vector<FolderReport>& reports,
                  const std::vector<JournalEntry>& journal = {}) {
  return mainState(reports, journal, 250'000'000'000, true, now, sampleFormats(), "Bin");
}

std::string counted(std::size_t groups) {
  return " | " + std::to_string(groups) + " groups";
}

TEST(MenuBarState, SumsUpTheFoldersThatAreTemporaryOrUnreadable) {
  const GoingItem tomorrow = going("d", now + secondsPerDay);
  const FolderStatus today =
      taggedStatus({}, {going("b", now + 3600), going("c", now + 7200), tomorrow});
  const FolderStatus once = taggedStatus({}, {going("b", now + 60), tomorrow});
  const FolderReport off = sampleReport(1, untaggedStatus(), clearingOnRestart());
  const std::pair<std::vector<FolderReport>, const char*> rows[] = {
      {{off}, "No Temporary folders yet | 0 folders · 250 GB free | 0 rows | 0 groups"},
      {{sampleReport(1, {})}, "Nothing goes today | 1 folder · 250 GB free | 1 rows | 0 groups"},
      {{sampleReport(1, dueOnce), sampleReport(2, dueOnce)},
       "2 items go now | 2 folders · 250 GB free | 2 rows | 1 groups"},
      {{sampleReport(1, today), sampleReport(2, today)},
       "4 items go today | 2 folders · 250 GB free | 2 rows | 2 groups"},
      {{sampleReport(1, once)}, "1 item goes today | 1 folder · 250 GB free | 1 rows | 2 groups"},
      {{sampleReport(1, taggedStatus({}, {tomorrow}))},
       "1 item goes tomorrow | 1 folder · 250 GB free | 1 rows | 1 groups"},
      // A folder without an id counts, but has no row.
      {{sampleReport(std::nullopt, dueOnce)},
       "1 item goes now | 1 folder · 250 GB free | 0 rows | 1 groups"},
  };
  for (const auto& [reports, drawn] : rows) {
    const MenuBarState state = stateOf(reports).overview;
    const std::size_t groups = state.forecast.size();
    EXPECT_EQ(state.headline + " | " + state.subheadline + " | " +
                  std::to_string(state.folders.size()) + " rows" + counted(groups),
              drawn);
    const bool hasRows = !state.folders.empty();
    EXPECT_EQ(menuBarBlocks(state),
              (MenuBarBlocks{true, !hasRows, hasRows && groups > 0, hasRows, false}));
  }
}

TEST(MainState, DescribesTheFoldersInTheirOrder) {
  FolderStatus protectedStatus = taggedStatus({}, {});
  protectedStatus.isProtectedRoot = true;
  const FolderStatus later = taggedStatus({}, {going("a", now + secondsPerDay)});
  const MainState state = stateOf({sampleReport(5, later, {}, "/b/zeta"),
                                   sampleReport(3, untaggedStatus(), deleting(), "/data/off"),
                                   sampleReport(4, std::nullopt, deleting(), "/data/M\xFCll"),
                                   sampleReport(2, protectedStatus, {}, "/a/zeta"),
                                   sampleReport(std::nullopt, taggedStatus({}, {}))},
                                  {entryOfFolder(3)});
  EXPECT_EQ(state.overview.folders,
            (std::vector<FolderSummary>{
                {5, "/b/zeta", "zeta", "90 days · Bin", "Oldest goes tomorrow", "/b/zeta"},
                {4, "/data/M\xFCll", "M\uFFFDll", "90 days · Delete", "Can't read this folder", ""},
                {2, "/a/zeta", "zeta", "90 days · Bin", "Nothing to clear", "/a/zeta"}}));
  ASSERT_EQ(state.overview.recentRuns.size(), 1U);
  EXPECT_TRUE(menuBarBlocks(state.overview).hasRecentRuns);
  EXPECT_TRUE(state.overview.recentRuns[0].detail.starts_with("off · "))
      << "though it lost its tag";

  std::string drawn;
  for (const MainFolder& folder : state.folders) {
    drawn += folder.name + (folder.isTemporary ? " T" : "") + (folder.isProtectedRoot ? " P" : "") +
             (folder.isReadable ? " R | " : " | ") + folder.distanceToGoing + " | " +
             folder.preview.headline + "\n";
  }
  EXPECT_EQ(drawn,
            "zeta T R | Oldest goes tomorrow | 1 item goes this week\n"
            "off R | Off | Nothing goes this week.\n"
            "M\uFFFDll | Can't read this folder | Can't read this folder\n"
            "zeta T P R | Nothing to clear | Nothing goes this week.\n");
  EXPECT_EQ(state.folders.at(1).settings, deleting());
}

TEST(MainState, InvitesOnlyWithoutAnyFolder) {
  const JournalEntry entry = entryOfFolder(0);
  // Those that are off still stand in the sidebar.
  EXPECT_EQ(overviewBlocks(stateOf({sampleReport(7, untaggedStatus())})),
            (OverviewBlocks{false, false, false}));
  EXPECT_EQ(overviewBlocks(stateOf({sampleReport(7, dueOnce)}, {entry})),
            (OverviewBlocks{false, true, true}));
  EXPECT_EQ(overviewBlocks(stateOf({sampleReport(std::nullopt, dueOnce)}, {entry})),
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
  const GoingItem tomorrow = going("c", utc(2026, 11, 17));
  const GoingItem inNineDays = going("a", utc(2026, 11, 25, 3));
  const std::vector due = {sampleItem("a"), sampleItem("b")};
  const struct {
    TemporarySettings settings;
    std::optional<FolderStatus> status;
    std::string drawn;
  } rows[] = {
      {clearingOnRestart(), std::nullopt, "Can't read this folder" + counted(0)},
      {{}, taggedStatus(due, {inNineDays}), "2 items go now" + counted(1)},
      {{},
       taggedStatus(due, {tomorrow, going("d", tomorrow.date), going("e", utc(2026, 11, 22))}),
       "5 items go this week" + counted(3)},
      // The first upcoming item is told, with no search for the earliest.
      {{},
       taggedStatus({}, {going("b", utc(2026, 12, 1)), inNineDays}),
       "Nothing goes this week. The oldest item goes in 15 days." + counted(0)},
      // The restart doesn't count, but is listed.
      {clearingOnRestart(noRules()), taggedStatus({}, {}, due),
       "Nothing goes this week." + counted(1)},
      {clearingOnRestart(), taggedStatus({sampleItem("x")}, {}, due),
       "1 item goes now" + counted(2)},
  };
  for (const auto& row : rows) {
    const FolderPreview preview =
        folderPreview(sampleReport(1, row.status, row.settings), now, sampleFormats(), "Bin");
    EXPECT_EQ(preview.headline + counted(preview.forecast.size()), row.drawn);
  }
}

}  // namespace
}  // namespace tidemar::testing
