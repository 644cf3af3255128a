#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "TidemarCore/Date.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// One top-level entry of a folder as it was read at one moment.
struct Item {
  FileURL url;

  /// The moment from which the entry's age counts: the later of when it was added to the folder and
  /// when it was last changed. Without one nothing says how old the entry is, so no rule clears it.
  std::optional<Date> freshness;

  /// Bytes of allocated storage, for a directory or package of its whole tree.
  std::int64_t size = 0;

  friend bool operator==(const Item&, const Item&) = default;
};

/// Items that were read together, in the order of the listing. Never changes; copies share the
/// items, so that a pointer to one holds as long as any copy.
class ItemList {
 public:
  ItemList() = default;
  ItemList(std::vector<Item> items)
      : _items(std::make_shared<const std::vector<Item>>(std::move(items))) {}

  const Item* begin() const noexcept { return _items ? _items->data() : nullptr; }
  const Item* end() const noexcept { return begin() + size(); }
  std::size_t size() const noexcept { return _items ? _items->size() : 0; }
  bool empty() const noexcept { return size() == 0; }

  /// The place of an item that a pointer into this list points at.
  std::size_t indexOf(const Item* item) const noexcept {
    return static_cast<std::size_t>(item - begin());
  }
  const Item& operator[](std::size_t index) const noexcept { return begin()[index]; }

  friend bool operator==(const ItemList& a, const ItemList& b) {
    return a._items == b._items || std::ranges::equal(a, b);
  }

 private:
  std::shared_ptr<const std::vector<Item>> _items;
};

/// The later of two dates that may be missing: the one that exists if only one does.
constexpr std::optional<Date> laterDate(std::optional<Date> first, std::optional<Date> second) {
  if (!first) return second;
  if (!second) return first;
  return *second > *first ? second : first;
}

}  // namespace tidemar

template <>
struct std::hash<tidemar::Item> {
  std::size_t operator()(const tidemar::Item& item) const {
    const std::size_t url = std::hash<tidemar::FileURL>{}(item.url);
    const std::size_t freshness = std::hash<std::optional<tidemar::Date>>{}(item.freshness);
    return (url * 31 + freshness) * 31 + std::hash<std::int64_t>{}(item.size);
  }
};
