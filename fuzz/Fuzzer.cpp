#include <cstdint>

#include "fuzz/Check.h"

namespace tidemar::fuzz {
/// The build names the target.
Check TIDEMAR_FUZZ_CHECK;
}  // namespace tidemar::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tidemar::fuzz;
  checkInTime(TIDEMAR_FUZZ_CHECK, {reinterpret_cast<const char*>(data), size});
  return 0;
}
