#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TidemarCore/Item.h"

namespace tidemar::testing {

/// An item of the folder "/f", its freshness in seconds since 1970.
inline Item item(std::string_view name, std::optional<double> freshness, std::int64_t size = 0) {
  return {FileURL("/f").appendingPathComponent(name),
          freshness ? std::optional(Date{*freshness}) : std::nullopt, size};
}

/// The names of what holds an `item` each, in order, joined by a blank.
template <class Element>
std::string namesOf(const std::vector<Element>& elements) {
  std::string result;
  for (const Element& element : elements) {
    if (!result.empty()) result += ' ';
    result += element.item->url.lastPathComponent();
  }
  return result;
}

}  // namespace tidemar::testing
