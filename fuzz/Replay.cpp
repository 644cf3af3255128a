#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include "fuzz/Check.h"

namespace tidemar::fuzz {

// The build lists the targets.
#define TARGET(name) Check check##name;
TIDEMAR_FUZZ_TARGETS
#undef TARGET

#define TARGET(name) {#name, check##name},
const std::map<std::string, Check*> checks = {TIDEMAR_FUZZ_TARGETS};

}  // namespace tidemar::fuzz

/// Runs the target whose name a directory bears over each of its files, as it is and repeated until
/// it is 64 KiB long, which shows what takes time by the square of a length. A directory without
/// files is a failure.
int main(int, char** arguments) {
  using namespace tidemar::fuzz;
  constexpr std::size_t longest = 64 * 1024;
  const std::filesystem::path directory = arguments[1];
  Check* const check = checks.at(directory.filename());
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    std::printf("%s\n", entry.path().c_str());
    std::fflush(stdout);
    std::ifstream file(entry.path(), std::ios::binary);
    // Of exactly its size, so that a look behind the end is seen.
    std::vector<char> input{std::istreambuf_iterator<char>(file), {}};
    input.shrink_to_fit();
    checkInTime(check, {input.data(), input.size()});
    std::vector<char> repeated;
    while (!input.empty() && repeated.size() + input.size() <= longest)
      repeated.insert(repeated.end(), input.begin(), input.end());
    repeated.shrink_to_fit();
    checkInTime(check, {repeated.data(), repeated.size()});
    ++count;
  }
  std::printf("%d inputs\n", count);
  return count > 0 ? 0 : 1;
}
