#include "fuzz/Check.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace tidemar::fuzz {

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

void checkInTime(Check check, std::string_view input) {
  constexpr double longest = 0.1;
  double seconds = 2 * longest;
  // Work beside this one can fill the caches during one measurement, hardly during three.
  for (int i = 0; i < 3 && seconds > longest; ++i) {
    const double start = processorSeconds();
    check(input);
    seconds = processorSeconds() - start;
  }
  require(seconds <= longest, "an input takes at most 100 ms");
}

}  // namespace tidemar::fuzz
