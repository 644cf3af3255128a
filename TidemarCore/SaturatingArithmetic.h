#pragma once

#include <cstdint>
#include <limits>

namespace tidemar {

/// The sum of two byte counts, held at the end of the 64-bit range instead of wrapping round it.
constexpr std::int64_t addingSaturated(std::int64_t a, std::int64_t b) noexcept {
  std::int64_t sum = 0;
  if (!__builtin_add_overflow(a, b, &sum)) return sum;
  return a < 0 ? std::numeric_limits<std::int64_t>::min()
               : std::numeric_limits<std::int64_t>::max();
}

/// The difference of two byte counts, held at the end of the 64-bit range.
constexpr std::int64_t subtractingSaturated(std::int64_t a, std::int64_t b) noexcept {
  std::int64_t difference = 0;
  if (!__builtin_sub_overflow(a, b, &difference)) return difference;
  return a < 0 ? std::numeric_limits<std::int64_t>::min()
               : std::numeric_limits<std::int64_t>::max();
}

}  // namespace tidemar
