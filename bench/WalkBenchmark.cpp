#include <filesystem>
#include <fstream>
#include <string>

#include <benchmark/benchmark.h>
#include <unistd.h>

#include "Platform/Files/DiskFileManager.h"
#include "TidemarKit/Inventory.h"

namespace {

using namespace tidemar;

constexpr int directories = 1000;
constexpr int filesInEach = 100;

/// A folder with one item: a directory of 1,000 directories of 100 empty files each. Made once, in
/// $TMPDIR.
class SampleFolder {
 public:
  SampleFolder() {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "tidemar-bench-XXXXXX").string();
    _url = FileURL(mkdtemp(pattern.data()));
    for (int i = 0; i < directories; ++i) {
      const auto directory = std::filesystem::path(_url.path()) / "item" / std::to_string(i);
      std::filesystem::create_directories(directory);
      for (int j = 0; j < filesInEach; ++j)
        std::ofstream(directory / ("file-" + std::to_string(j)));
    }
  }
  ~SampleFolder() { std::filesystem::remove_all(_url.path()); }
  const FileURL& url() const { return _url; }

 private:
  FileURL _url;
};

void readFolder(benchmark::State& state) {
  const SampleFolder folder;
  const DiskFileManager disk;
  for (auto _ : state)
    benchmark::DoNotOptimize(Inventory::items(*disk.openFolder(folder.url())));
  state.SetItemsProcessed(state.iterations() * directories * (filesInEach + 1));
}
BENCHMARK(readFolder)->Unit(benchmark::kMillisecond);

/// The same by the standard library's iterator with one status call an entry, for comparison.
void readFolderByIterator(benchmark::State& state) {
  const SampleFolder folder;
  for (auto _ : state) {
    std::uintmax_t size = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.url().path())) {
      if (entry.is_regular_file()) size += entry.file_size();
    }
    benchmark::DoNotOptimize(size);
  }
  state.SetItemsProcessed(state.iterations() * directories * (filesInEach + 1));
}
BENCHMARK(readFolderByIterator)->Unit(benchmark::kMillisecond);

}  // namespace
