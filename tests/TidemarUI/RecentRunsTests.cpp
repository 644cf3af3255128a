#include "TidemarUI/State/MenuBarState.h"
#include "TidemarUI/State/RecentRuns.h"
#include "tests/TidemarUI/Samples.h"

namespace tidemar::testing {
namespace {

constexpr Date morning = utc(2026, 11, 16, 9, 30);

/// Entries as words: the id or a dash for none, "x" for deleted and "u" for put back, "/2" for the
/// second folder, and "+4" for four seconds after that morning.
std::vector<JournalEntry> journalOf(const std::string& text) {
  std::vector<JournalEntry> journal;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    JournalEntry& entry = journal.emplace_back();
    if (word[0] != '-') entry.id = word[0] - '0';
    const std::size_t slash = word.find('/');
    const std::size_t plus = word.find('+');
    entry.folderID = slash == word.npos ? 1 : word[slash + 1] - '0';
    entry.performedAt = morning + (plus == word.npos ? 0 : std::stod(word.substr(plus)));
    if (word.contains('x')) entry.disposal = Disposal::delete_;
    if (word.contains('u')) entry.undoneAt = entry.performedAt + 60;
  }
  return journal;
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
  const struct {
    const char* name;
    const char* journal;
    std::vector<std::string> runs;
  } rows[] = {
      {"an empty journal", "", {}},
      {"entries keep the journal's order, and one without an id counts, too",
       "9 - 8",
       {"3 items to the Trash | Downloads · 09:30 | 9 8 | Put 3 items back"}},
      {"one permanent entry makes the run permanent",
       "9 8x",
       {"2 items deleted permanently | Downloads · 09:30 | 9 8 | "}},
      {"deleted is told before put back",
       "9u 8xu",
       {"2 items deleted permanently | Downloads · 09:30 | 9 8 | "}},
      {"all put back", "9u 8u", {"2 items put back | Downloads · 09:30 | 9 8 | "}},
      {"some put back: the whole count stays",
       "9u 8",
       {"2 items to the Trash | Downloads · 09:30 | 9 8 | Put 2 items back"}},
      {"a folder that is gone, and another",
       "9/5 8/2",
       {"1 item to the Trash | Removed folder · 09:30 | 9 | Put 1 item back",
        "1 item to the Trash | M\uFFFDll · 09:30 | 8 | Put 1 item back"}},
      {"instants a millisecond apart are two runs",
       "9+0.001 8",
       {"1 item to the Trash | Downloads · 09:30 | 9 | Put 1 item back",
        "1 item to the Trash | Downloads · 09:30 | 8 | Put 1 item back"}},
      {"the three newest of five, newest first",
       "1+60 2+240 3 4+180 5+120",
       {"1 item to the Trash | Downloads · 09:34 | 2 | Put 1 item back",
        "1 item to the Trash | Downloads · 09:33 | 4 | Put 1 item back",
        "1 item to the Trash | Downloads · 09:32 | 5 | Put 1 item back"}},
      {"a run without any id gives no row and leaves its place empty",
       "4+180 -+120 2+60 1",
       {"1 item to the Trash | Downloads · 09:33 | 4 | Put 1 item back",
        "1 item to the Trash | Downloads · 09:31 | 2 | Put 1 item back"}},
  };
  for (const auto& row : rows)
    EXPECT_EQ(drawn(journalOf(row.journal)), row.runs) << row.name;
}

TEST(TrayMenu, OffersTheLatestRunThatCanBePutBack) {
  const struct {
    const char* journal;
    const char* putBack;
    std::vector<std::int64_t> ids;
  } rows[] = {
      {"", "", {}},
      {"1 3+9000 2+9000", "Put 2 items back · Downloads · 12:00", {3, 2}},
      // One before a deleted one and one that is back.
      {"1 2x+9000 3u+9060", "Put 1 item back · Downloads · 09:30", {1}},
      // None that the popover doesn't show.
      {"1 2x+9000 3x+9060 4x+9120", "", {}},
  };
  const std::vector<FolderReport> reports = {
      sampleReport(1, taggedStatus({sampleItem("a")}, {}), {}, "/home/ada/Downloads")};
  for (const auto& row : rows) {
    const TrayMenuState state =
        trayMenuState(reports, journalOf(row.journal), morning, Formats("en_GB", "UTC"), "Trash");
    EXPECT_EQ(state.headline, "1 item goes now") << row.journal;
    EXPECT_EQ(state.putBack, row.putBack) << row.journal;
    EXPECT_EQ(state.journalEntryIDs, row.ids) << row.journal;
  }
}

}  // namespace
}  // namespace tidemar::testing
