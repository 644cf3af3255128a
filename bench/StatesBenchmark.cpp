#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "Platform/Locale/Formats.h"
#include "TidemarCore/Forecast.h"
#include "TidemarCore/RemovalPlanning.h"
#include "TidemarUI/State/MainState.h"

namespace tidemar {
namespace {

constexpr Date now{1794787200};
constexpr int folderCount = 1000;
constexpr int itemCount = 1000;

/// Folders of items whose ages are spread evenly over `days`, planned by the rules.
std::vector<FolderReport> reportsOf(const TemporarySettings& settings, double days) {
  std::vector<FolderReport> reports;
  reports.reserve(folderCount);
  for (int folder = 0; folder < folderCount; ++folder) {
    const FileURL url("/home/ada/Documents/Projects/folder " + std::to_string(folder));
    FolderSnapshot snapshot{.isTagged = true, .isProtectedRoot = false, .items = {}};
    for (int item = 0; item < itemCount; ++item) {
      const double age = days * (item * 7919 % itemCount) / itemCount;
      snapshot.items.push_back(
          {url.appendingPathComponent("Screenshot " + std::to_string(item) + ".png"),
           now - age * secondsPerDay, 40'000});
    }
    FolderReport report;
    report.folder.id = folder;
    report.folder.path = url.path();
    report.folder.settings = settings;
    FolderStatus status;
    status.url = url;
    status.isTagged = true;
    status.dueNow = removalsDueNow(snapshot, settings,
                                   {.now = now,
                                    .availableCapacity = 1'000'000'000'000,
                                    .totalCapacity = 2'000'000'000'000,
                                    .bootTime = now,
                                    .lastRunAt = now});
    status.upcoming = upcomingRemovals(snapshot, settings);
    status.items = std::move(snapshot.items);
    report.status = std::move(status);
    reports.push_back(std::move(report));
  }
  return reports;
}

TemporarySettings settingsOf(std::int64_t maxAgeDays, bool emptyOnRestart) {
  TemporarySettings settings;
  settings.maxAgeDays = maxAgeDays;
  settings.emptyOnRestart = emptyOnRestart;
  return settings;
}

void buildMainStates(benchmark::State& state, const std::vector<FolderReport>& reports) {
  const Formats formats("en_US", "Europe/Berlin");
  for (auto _ : state)
    benchmark::DoNotOptimize(mainState(reports, {}, 250'000'000'000, false, now, formats, "Bin"));
  state.counters["s/item"] =
      benchmark::Counter(folderCount * itemCount, benchmark::Counter::kIsIterationInvariantRate |
                                                      benchmark::Counter::kInvert);
}

/// Ages over 90 days, a rule of 90 days: about one item in thirteen goes this week.
void MainStateOfAQuietWeek(benchmark::State& state) {
  buildMainStates(state, reportsOf(settingsOf(90, false), 90));
}
BENCHMARK(MainStateOfAQuietWeek)->Unit(benchmark::kMillisecond);

/// Every item goes this week.
void MainStateOfAFullWeek(benchmark::State& state) {
  buildMainStates(state, reportsOf(settingsOf(7, false), 7));
}
BENCHMARK(MainStateOfAFullWeek)->Unit(benchmark::kMillisecond);

/// Every item stands in the forecast: a third is due, a third goes this week, the rest on restart.
void MainStateWithEveryItemListed(benchmark::State& state) {
  buildMainStates(state, reportsOf(settingsOf(14, true), 21));
}
BENCHMARK(MainStateWithEveryItemListed)->Unit(benchmark::kMillisecond);

void MakingFormats(benchmark::State& state) {
  for (auto _ : state)
    benchmark::DoNotOptimize(Formats("de_DE", "Europe/Berlin"));
}
BENCHMARK(MakingFormats)->Unit(benchmark::kMicrosecond);

void WritingADate(benchmark::State& state) {
  const Formats formats("de_DE", "Europe/Berlin");
  for (auto _ : state)
    benchmark::DoNotOptimize(formats.shortDate(now));
}
BENCHMARK(WritingADate)->Unit(benchmark::kMicrosecond);

void WritingAByteCount(benchmark::State& state) {
  const Formats formats("de_DE", "Europe/Berlin");
  for (auto _ : state)
    benchmark::DoNotOptimize(formats.byteCountText(5'250'000'000));
}
BENCHMARK(WritingAByteCount)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tidemar
