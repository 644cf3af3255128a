#pragma once

#include <optional>
#include <string_view>

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// A file beside the database that holds a little of the disk, to be given up where nothing else
/// could free any: a deletion on a full disk needs room for its row. Nothing here throws: without a
/// reserve all works but that. Used by one thread at a time.
class SpaceReserve {
 public:
  /// In this directory; none for a database in memory, which has no reserve.
  explicit SpaceReserve(std::optional<FileURL> directory);

  /// Makes the file where it isn't there, unless it would take much of what is left.
  void keep() noexcept;

  /// Whether files here can't grow just now for lack of space or of quota.
  bool isDiskFull() const noexcept;

  /// Gives the space back to the disk. Answers whether there was any to give.
  bool giveUp() noexcept;

 private:
  std::optional<FileURL> _directory;
  bool _isKept = false;
};

}  // namespace tidemar
