#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "Platform/Locale/Formats.h"
#include "TidemarUI/State/MainState.h"
#include "bench/SampleReports.h"

namespace tidemar {
namespace {

constexpr Date now = sampleNow;
constexpr int folderCount = 1000;
constexpr int itemCount = 1000;

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
  buildMainStates(state, sampleReports(folderCount, itemCount, sampleSettings(90, false), 90));
}
BENCHMARK(MainStateOfAQuietWeek)->Unit(benchmark::kMillisecond);

/// Every item goes this week.
void MainStateOfAFullWeek(benchmark::State& state) {
  buildMainStates(state, sampleReports(folderCount, itemCount, sampleSettings(7, false), 7));
}
BENCHMARK(MainStateOfAFullWeek)->Unit(benchmark::kMillisecond);

/// Every item stands in the forecast: a third is due, a third goes this week, the rest on restart.
void MainStateWithEveryItemListed(benchmark::State& state) {
  buildMainStates(state, sampleReports(folderCount, itemCount, sampleSettings(14, true), 21));
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
