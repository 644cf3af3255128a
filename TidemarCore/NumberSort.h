#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace tidemar {

/// Sorts elements ascending by a number of each, a double that is no NaN; those of equal numbers in
/// any order. Takes time in proportion to their count where the numbers are spread over their
/// range, and that of `std::sort` where they aren't; and room for as many elements again.
template <class Element, class NumberOf>
void sortByNumber(std::vector<Element>& elements, NumberOf numberOf) {
  constexpr std::size_t fewest = 256;  // Fewer aren't worth the counting.
  constexpr unsigned digitBits = 11;   // The counts of a digit fit into the nearest cache.
  constexpr std::uint32_t base = 1U << digitBits;
  const auto isLess = [&](const Element& a, const Element& b) { return numberOf(a) < numberOf(b); };

  if (std::ranges::is_sorted(elements, isLess)) return;
  const auto [least, most] = std::ranges::minmax(elements, {}, numberOf);
  const double start = numberOf(least);
  const double range = numberOf(most) - start;
  const double scale = (double{base} * base - 1) / range;
  if (elements.size() < fewest || !std::isfinite(range) || !std::isfinite(scale)) {
    std::ranges::sort(elements, isLess);
    return;
  }

  // Each number has a bucket; the higher number is never in the lower one.
  const auto bucketOf = [&](const Element& element) {
    return static_cast<std::uint32_t>((numberOf(element) - start) * scale);
  };
  std::array<std::array<std::uint32_t, base>, 2> places{};  // By the lower digit, then the higher.
  for (const Element& element : elements) {
    const std::uint32_t bucket = bucketOf(element);
    ++places[0][bucket % base];
    ++places[1][bucket / base];
  }
  for (auto& counts : places) {
    std::uint32_t place = 0;
    for (std::uint32_t& count : counts)
      place += std::exchange(count, place);
  }
  const auto sorted = std::make_unique_for_overwrite<Element[]>(elements.size());
  for (const Element& element : elements)
    sorted[places[0][bucketOf(element) % base]++] = element;
  for (std::size_t i = 0; i < elements.size(); ++i)
    elements[places[1][bucketOf(sorted[i]) / base]++] = sorted[i];

  for (auto first = elements.begin(); first != elements.end();) {
    const std::uint32_t bucket = bucketOf(*first);
    const auto last = std::find_if(first + 1, elements.end(),
                                   [&](const Element& e) { return bucketOf(e) != bucket; });
    if (last - first > 1) std::sort(first, last, isLess);
    first = last;
  }
}

}  // namespace tidemar
