#include "TidemarUI/State/MenuBarState.h"
#include "TidemarUI/State/RecentRuns.h"
#include "tests/TidemarUI/Samples.h"

namespace tidemar::testing {
namespace {

constexpr Date morning = utc(2026, 11, 16, 9, 30);
JournalEntry entry(std::optional<std::int64_t> id, std::int64_t folderID, Date performedAt,
                   Disposal disposal = Disposal::bin, bool isUndone = false) {
  JournalEntry result;
  result.id = id;
  result.folderID = folderID;
  result.performedAt = performedAt;
  result.disposal = disposal;
  if (isUndone) result.undoneAt = performedAt + 60;
  return result;
}

/// Each run as "summary | detail | ids | put-back label", the label only where it can be put back.
std::vector<std::string> drawn(const std::vector<JournalEntry>& journal) {
  const std::vector<FolderReport> reports = {
      sampleReport(1, std::nullopt, {}, "/home/ada/Downloads"),
      sampleReport(2, std::nullopt, {}, "/home/ada/M\xFCll"),
      sampleReport(std::nullopt, std::nullopt)};
  std::vector<std::string> lines;
  for (const RecentRun& run : recentRuns(journal, reports, Formats("en_GB", "UTC"), "Trash")) {
    EXPECT_EQ(run.id, run.journalEntryIDs.front());
    std::string line = run.summary + " | " + run.detail + " |";
    for (std::int64_t id : run.journalEntryIDs)
      line += " " + std::to_string(id);
    lines.push_back(line + " | " + (run.canPutBack ? run.putBackLabel : ""));
  }
  return lines;
}

TEST(RecentRuns, TellTheLastCleanings) {
  constexpr auto bin = Disposal::bin;
  constexpr auto delete_ = Disposal::delete_;
  constexpr bool undone = true;
  const struct {
    const char* name;
    std::vector<JournalEntry> journal;
    std::vector<std::string> runs;
  } rows[] = {
      {"an empty journal", {}, {}},
      {"entries keep the journal's order, and one without an id counts, too",
       {entry(9, 1, morning), entry(std::nullopt, 1, morning), entry(8, 1, morning)},
       {"3 items to the Trash | Downloads · 09:30 | 9 8 | Put 3 items back"}},
      {"one permanent entry makes the run permanent",
       {entry(9, 1, morning), entry(8, 1, morning, delete_)},
       {"2 items deleted permanently | Downloads · 09:30 | 9 8 | "}},
      {"deleted is told before put back",
       {entry(9, 1, morning, bin, undone), entry(8, 1, morning, delete_, undone)},
       {"2 items deleted permanently | Downloads · 09:30 | 9 8 | "}},
      {"all put back",
       {entry(9, 1, morning, bin, undone), entry(8, 1, morning, bin, undone)},
       {"2 items put back | Downloads · 09:30 | 9 8 | "}},
      {"some put back: the whole count stays",
       {entry(9, 1, morning, bin, undone), entry(8, 1, morning)},
       {"2 items to the Trash | Downloads · 09:30 | 9 8 | Put 2 items back"}},
      {"a folder that is gone",
       {entry(7, 5, morning)},
       {"1 item to the Trash | Removed folder · 09:30 | 7 | Put 1 item back"}},
      {"two folders at one instant are two runs",
       {entry(9, 1, morning), entry(8, 2, morning)},
       {"1 item to the Trash | Downloads · 09:30 | 9 | Put 1 item back",
        "1 item to the Trash | M\uFFFDll · 09:30 | 8 | Put 1 item back"}},
      {"instants a millisecond apart are two runs",
       {entry(9, 1, morning + 0.001), entry(8, 1, morning)},
       {"1 item to the Trash | Downloads · 09:30 | 9 | Put 1 item back",
        "1 item to the Trash | Downloads · 09:30 | 8 | Put 1 item back"}},
      {"the three newest of five, newest first",
       {entry(1, 1, morning + 60), entry(2, 1, morning + 240), entry(3, 1, morning),
        entry(4, 1, morning + 180), entry(5, 1, morning + 120)},
       {"1 item to the Trash | Downloads · 09:34 | 2 | Put 1 item back",
        "1 item to the Trash | Downloads · 09:33 | 4 | Put 1 item back",
        "1 item to the Trash | Downloads · 09:32 | 5 | Put 1 item back"}},
      {"a run without any id gives no row and leaves its place empty",
       {entry(4, 1, morning + 180), entry(std::nullopt, 1, morning + 120),
        entry(2, 1, morning + 60), entry(1, 1, morning)},
       {"1 item to the Trash | Downloads · 09:33 | 4 | Put 1 item back",
        "1 item to the Trash | Downloads · 09:31 | 2 | Put 1 item back"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(drawn(row.journal), row.runs);
  }
}

TEST(TrayMenu, OffersTheLatestRunThatCanBePutBack) {
  const Date noon = morning + 9000;
  const struct {
    const char* name;
    std::vector<JournalEntry> journal;
    std::string putBack;
    std::vector<std::int64_t> ids;
  } rows[] = {
      {"no run", {}, "", {}},
      {"the latest",
       {entry(1, 1, morning), entry(3, 1, noon), entry(2, 1, noon)},
       "Put 2 items back · Downloads · 12:00",
       {3, 2}},
      {"one before a deleted and one that is back",
       {entry(1, 1, morning), entry(2, 1, noon, Disposal::delete_),
        entry(3, 1, noon + 60, Disposal::bin, true)},
       "Put 1 item back · Downloads · 09:30",
       {1}},
      {"none that the popover doesn't show",
       {entry(1, 1, morning), entry(2, 1, noon, Disposal::delete_),
        entry(3, 1, noon + 60, Disposal::delete_), entry(4, 1, noon + 120, Disposal::delete_)},
       "",
       {}},
  };
  const std::vector<FolderReport> reports = {
      sampleReport(1, taggedStatus({sampleItem("a")}, {}), {}, "/home/ada/Downloads")};
  for (const auto& row : rows) {
    const TrayMenuState state =
        trayMenuState(reports, row.journal, noon, Formats("en_GB", "UTC"), "Trash");
    EXPECT_EQ(state.headline, "1 item goes now") << row.name;
    EXPECT_EQ(state.putBack, row.putBack) << row.name;
    EXPECT_EQ(state.journalEntryIDs, row.ids) << row.name;
  }
}

}  // namespace
}  // namespace tidemar::testing
