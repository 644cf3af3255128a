#include "fuzz/Check.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace tidemar::fuzz {

/// The build names the target.
void TIDEMAR_FUZZ_CHECK(std::string_view input);

namespace {

/// The processor's time alone: what else the machine does at the moment isn't the parser's.
double processorSeconds() {
  std::timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

}  // namespace

void require(bool holds, const char* sentence) {
  if (holds) return;
  std::fprintf(stderr, "This doesn't hold: %s.\n", sentence);
  std::abort();
}

std::string_view takeLine(std::string_view& input) {
  const std::size_t end = std::min(input.find('\n'), input.size());
  const std::string_view line = input.substr(0, end);
  input.remove_prefix(std::min(end + 1, input.size()));
  return line;
}

}  // namespace tidemar::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tidemar::fuzz;
  constexpr double longest = 0.1;
  double seconds = 2 * longest;
  // Work beside this one can fill the caches during one measurement, hardly during three.
  for (int i = 0; i < 3 && seconds > longest; ++i) {
    const double start = processorSeconds();
    TIDEMAR_FUZZ_CHECK({reinterpret_cast<const char*>(data), size});
    seconds = processorSeconds() - start;
  }
  require(seconds <= longest, "an input takes at most 100 ms");
  return 0;
}
