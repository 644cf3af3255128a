#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "TidemarUI/State/MainState.h"
#include "tests/TidemarUI/Samples.h"
#include "tests/support/Dates.h"

namespace tidemar {
namespace {

using namespace testing;

constexpr Date now = utc(2026, 11, 16, 12);

FolderStatus untaggedStatus() {
  FolderStatus status = taggedStatus({}, {}, {sampleItem("a")});
  status.isTagged = false;
  return status;
}

MainState stateOf(const std::vector<FolderReport>& reports,
                  const std::vector<JournalEntry>& journal = {}) {
  return mainState(reports, journal, 250'000'000'000, false, now, sampleFormats(), "Bin");
}

TEST(MenuBarState, SumsUpTheFoldersThatAreTemporaryOrUnreadable) {
  const FolderStatus dueOnce = taggedStatus({due("a")}, {});
  const FolderStatus today = taggedStatus({}, {going("b", now + 3600), going("c", now + 7200)});
  struct Row {
    const char* name;
    std::vector<FolderReport> reports;
    const char* headline;
    const char* subheadline;
    std::size_t rowCount;
    std::size_t groupCount;
  };
  const Row rows[] = {
      {"no folders", {}, "No Temporary folders yet", "0 folders · 250 GB free", 0, 0},
      {"all folders off",
       {sampleReport(1, untaggedStatus(), clearingOnRestart())},
       "No Temporary folders yet",
       "0 folders · 250 GB free",
       0,
       0},
      {"one that can't be read",
       {sampleReport(1, std::nullopt)},
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
       1},
      {"a folder without an id counts, but has no row",
       {sampleReport(std::nullopt, dueOnce)},
       "1 item goes now",
       "1 folder · 250 GB free",
       0,
       1},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const MenuBarState state = stateOf(row.reports).overview;
    EXPECT_EQ(state.headline, row.headline);
    EXPECT_EQ(state.subheadline, row.subheadline);
    EXPECT_EQ(state.folders.size(), row.rowCount);
    EXPECT_EQ(state.forecast.size(), row.groupCount);
  }
}

TEST(MenuBarState, KeepsTheOrderAndDescribesEachFolder) {
  const std::vector<FolderReport> reports = {
      sampleReport(5, taggedStatus({}, {going("a", now + secondsPerDay)}), {}, "/data/zeta"),
      sampleReport(3, untaggedStatus(), {}, "/data/off"),
      sampleReport(4, std::nullopt, deleting(), "/data/M\xFCll")};
  const MenuBarState state = menuBarState(reports, {}, 0, true, now, sampleFormats(), "Trash");
  EXPECT_EQ(state.folders,
            (std::vector<FolderSummary>{
                {5, "/data/zeta", "zeta", "90 days · Trash", "Oldest goes tomorrow"},
                {4, "/data/M\xFCll", "M\uFFFDll", "90 days · Delete", "Can't read this folder"}}));
  EXPECT_EQ(state.subheadline, "2 folders · Zero kB free");
  EXPECT_TRUE(state.isFinderExtensionOff);
}

TEST(MenuBarState, SaysWhereFoldersOfOneNameAre) {
  const std::vector<FolderReport> reports = {
      sampleReport(1, taggedStatus({}, {}), {}, "/data/New"),
      sampleReport(2, taggedStatus({}, {}), {}, "/data/Scratch"),
      sampleReport(3, taggedStatus({}, {}), {}, "/old/New")};
  const MenuBarState state = menuBarState(reports, {}, 0, true, now, sampleFormats(), "Bin");
  ASSERT_EQ(state.folders.size(), 3U);
  EXPECT_EQ(state.folders[0].place, "/data/New");
  EXPECT_EQ(state.folders[1].place, "");
  EXPECT_EQ(state.folders[2].place, "/old/New");
}

TEST(MenuBarState, NamesTheFolderOfARunThoughItLostItsTag) {
  JournalEntry entry;
  entry.id = 1;
  entry.folderID = 3;
  const MenuBarState state = stateOf({sampleReport(3, untaggedStatus())}, {entry}).overview;
  ASSERT_EQ(state.recentRuns.size(), 1u);
  EXPECT_EQ(state.recentRuns.front().detail.find("Downloads · "), 0u);
}

TEST(MenuBarState, ShowsTheInvitationOrTheBlocks) {
  const std::vector<ForecastGroup> forecast(1);
  const std::vector<FolderSummary> folders(1);
  const std::vector<RecentRun> runs(1);
  struct Row {
    const char* name;
    MenuBarState state;
    MenuBarBlocks blocks;
  };
  const Row rows[] = {
      {"nothing at all", {"", "", false, {}, {}, {}}, {false, true, false, false, false}},
      {"the warning stands above the invitation",
       {"", "", true, {}, {}, {}},
       {true, true, false, false, false}},
      {"without a row, no other block",
       {"", "", false, forecast, {}, runs},
       {false, true, false, false, false}},
      {"folders alone", {"", "", false, {}, folders, {}}, {false, false, false, true, false}},
      {"everything", {"", "", true, forecast, folders, runs}, {true, false, true, true, true}},
  };
  for (const Row& row : rows)
    EXPECT_EQ(menuBarBlocks(row.state), row.blocks) << row.name;
}

TEST(MainState, ListsEveryFolderWithAnId) {
  FolderStatus protectedStatus = taggedStatus({}, {});
  protectedStatus.isProtectedRoot = true;
  const MainState state = stateOf({sampleReport(2, taggedStatus({due("a")}, {}), {}, "/data/b"),
                                   sampleReport(1, untaggedStatus(), deleting(), "/data/a"),
                                   sampleReport(3, std::nullopt, {}, "/data/c"),
                                   sampleReport(std::nullopt, taggedStatus({}, {})),
                                   sampleReport(4, protectedStatus, {}, "/home/ada")});
  ASSERT_EQ(state.folders.size(), 4u);
  struct Row {
    const char* name;
    bool isTemporary;
    bool isProtectedRoot;
    bool isReadable;
    const char* distance;
    const char* headline;
  };
  const Row rows[] = {
      {"b", true, false, true, "1 item goes now", "1 item goes now"},
      {"a", false, false, true, "Off", "Nothing goes this week."},
      {"c", false, false, false, "Can't read this folder", "Can't read this folder"},
      {"ada", true, true, true, "Nothing to clear", "Nothing goes this week."},
  };
  for (std::size_t i = 0; i < state.folders.size(); ++i) {
    const MainFolder& folder = state.folders[i];
    SCOPED_TRACE(rows[i].name);
    EXPECT_EQ(folder.name, rows[i].name);
    EXPECT_EQ(folder.isTemporary, rows[i].isTemporary);
    EXPECT_EQ(folder.isProtectedRoot, rows[i].isProtectedRoot);
    EXPECT_EQ(folder.isReadable, rows[i].isReadable);
    EXPECT_EQ(folder.distanceToGoing, rows[i].distance);
    EXPECT_EQ(folder.preview.headline, rows[i].headline);
  }
  EXPECT_EQ(state.folders[1].settings, deleting());
  EXPECT_EQ(overviewBlocks(state), (OverviewBlocks{false, true, false}));
}

TEST(MainState, ShowsTheOverviewWhereNoFolderIsChosen) {
  const MainState state = stateOf({sampleReport(7, untaggedStatus())});
  EXPECT_EQ(shownFolder(state, MainSelection::folder(7)), &state.folders.front());
  EXPECT_EQ(shownFolder(state, MainSelection::folder(8)), nullptr);
  EXPECT_EQ(shownFolder(state, MainSelection::overview()), nullptr);
  EXPECT_EQ(shownFolder(state, std::nullopt), nullptr);
  EXPECT_EQ(removableFolderID(MainSelection::folder(7)), 7);
  EXPECT_EQ(removableFolderID(MainSelection::overview()), std::nullopt);
  EXPECT_EQ(removableFolderID(std::nullopt), std::nullopt);
}

TEST(MainState, InvitesOnlyWithoutAnyFolder) {
  // Folders that are off still stand in the sidebar.
  EXPECT_EQ(overviewBlocks(stateOf({sampleReport(7, untaggedStatus())})), OverviewBlocks{});
  EXPECT_EQ(overviewBlocks(stateOf({})), (OverviewBlocks{true, false, false}));
  EXPECT_EQ(overviewBlocks(stateOf({sampleReport(std::nullopt, taggedStatus({due("a")}, {}))})),
            (OverviewBlocks{true, false, false}));
}

}  // namespace
}  // namespace tidemar
