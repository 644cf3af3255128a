#pragma once

#include <algorithm>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "TidemarCore/Date.h"
#include "TidemarCore/Item.h"
#include "TidemarCore/NumberSort.h"

namespace tidemar {

/// The bytes by which a file name is sorted: its canonical composition (Unicode NFC) in UTF-8,
/// whose byte order is the order of Unicode scalars. A name that isn't UTF-8 is its own key, so
/// that it too has one place among the others.
std::string nameOrderKey(std::string_view name);

/// Whether one file name sorts before another: by `nameOrderKey`, and by their bytes where the keys
/// agree. A strict total order over all byte strings: case-sensitive, without a locale, and digits
/// have no value.
bool nameSortsBefore(std::string_view a, std::string_view b);

/// Sorts items of equal date by the names of what they point at.
void sortByName(std::span<const Item*> items);

/// Sorts elements that point at an `item` ascending by `date`, and those of equal date by the name
/// order of their items' last path components.
template <class Element>
void sortByDateThenName(std::vector<Element>& elements, Date Element::*date) {
  sortByNumber(elements, [date](const Element& e) { return (e.*date).secondsSince1970; });
  std::vector<const Item*> items;
  for (auto first = elements.begin(); first != elements.end();) {
    const auto last = std::find_if(first, elements.end(),
                                   [&](const Element& e) { return e.*date != (*first).*date; });
    if (last - first > 1) {
      items.clear();
      std::ranges::transform(first, last, std::back_inserter(items), &Element::item);
      sortByName(items);
      std::ranges::for_each(first, last,
                            [next = items.begin()](Element& e) mutable { e.item = *next++; });
    }
    first = last;
  }
}

}  // namespace tidemar
