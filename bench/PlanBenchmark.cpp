#include <random>
#include <string>

#include <benchmark/benchmark.h>

#include "TidemarCore/Forecast.h"
#include "TidemarCore/RemovalPlanning.h"

namespace {

using namespace tidemar;

constexpr int count = 1'000'000;
constexpr Date now{1'800'000'000};

/// A folder of a million items; `distinctDates` of 1 gives all of them the same date, as an
/// unpacked archive has.
FolderSnapshot sampleSnapshot(int distinctDates, const std::string& name) {
  std::mt19937_64 random(1);
  FolderSnapshot snapshot{.isTagged = true, .isProtectedRoot = false, .items = {}};
  snapshot.items.reserve(count);
  for (int i = 0; i < count; ++i) {
    const double age = static_cast<double>(random() % static_cast<unsigned>(distinctDates)) * 10;
    snapshot.items.push_back(
        {FileURL("/home/me/Downloads/" + name + std::to_string(random())), now - age, 4096});
  }
  return snapshot;
}

void plan(benchmark::State& state, int distinctDates, const std::string& name) {
  const FolderSnapshot snapshot = sampleSnapshot(distinctDates, name);
  TemporarySettings settings;
  settings.sizeLimit = 4096LL * count / 2;
  const RunConditions conditions{
      .now = now, .availableCapacity = 1, .totalCapacity = 2, .bootTime = {}, .lastRunAt = {}};
  for (auto _ : state)
    benchmark::DoNotOptimize(removalsDueNow(snapshot, settings, conditions));
}
BENCHMARK_CAPTURE(plan, datesDiffer, 1'000'000'000, "file-")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(plan, oneDate, 1, "file-")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(plan, oneDateAndAccents, 1, "Übergrößenträger-")->Unit(benchmark::kMillisecond);

void forecast(benchmark::State& state) {
  const FolderSnapshot snapshot = sampleSnapshot(1'000'000'000, "file-");
  for (auto _ : state)
    benchmark::DoNotOptimize(upcomingRemovals(snapshot, {}));
}
BENCHMARK(forecast)->Unit(benchmark::kMillisecond);

}  // namespace
