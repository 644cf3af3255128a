#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>

#include "Platform/PlatformError.h"

namespace tidemar {

/// A time as file systems keep it.
struct Timestamp {
  std::int64_t seconds = 0;
  std::uint32_t nanoseconds = 0;

  friend auto operator<=>(const Timestamp&, const Timestamp&) = default;
};

/// What lies below an item, in a form that two looks can be compared by: as long as no entry comes,
/// goes or changes, it stays equal.
struct TreeState {
  std::uint64_t entries = 0;

  /// Over inode, kind, size and times of each entry, in any order.
  std::uint64_t fingerprint = 0;

  /// The latest change time of an entry: hidden entries and the contents of packages count.
  Timestamp latestChange;

  bool isComplete = true;  ///< Every part could be read.

  friend bool operator==(const TreeState&, const TreeState&) = default;
};

/// What tells one entry from every other, past and present, and its content from any later one. A
/// rename changes none of it.
struct EntryIdentity {
  std::uint64_t inode = 0;
  std::uint32_t kind = 0;  ///< The type bits of its mode.
  Timestamp birth;         ///< 0 where the file system keeps none.
  Timestamp modification;
  std::uint64_t size = 0;

  friend bool operator==(const EntryIdentity&, const EntryIdentity&) = default;
};

/// A top-level item as one look found it: what its removal is bound to.
struct ItemState {
  std::string name;
  EntryIdentity root;
  TreeState tree;

  /// Of the item itself and of all that lies in it.
  Timestamp latestChange;

  /// Why it can't go as a whole in the way that was asked about; none if nothing is seen to stand
  /// in the way.
  std::optional<PlatformError> obstacle;
};

}  // namespace tidemar
