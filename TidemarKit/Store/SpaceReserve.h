#pragma once

#include <optional>
#include <string>

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// A file beside the database that holds a little of the disk, to be given up where nothing else
/// could free any: a deletion on a full disk needs room for its row. Nothing here throws: without a
/// reserve all works but that. Used by one thread at a time.
class SpaceReserve {
 public:
  /// Enough for the journal of a row on every file system tried; a full btrfs wants the most.
  static constexpr std::size_t size = std::size_t{4} << 20U;

  /// In this directory; none for a database in memory, which has no reserve.
  explicit SpaceReserve(const std::optional<FileURL>& directory);

  /// Makes the file where it isn't there, unless it would take much of what is left.
  void keep() noexcept;

  /// As `keep`, once after each giving up, and else nothing: before each of many removals.
  void keepAgain() noexcept;

  /// Whether files here can't grow just now for lack of space or of quota.
  bool isDiskFull() const noexcept;

  /// Gives the space back to the disk. Answers whether there was any to give.
  bool giveUp() noexcept;

 private:
  bool isNeeded() const noexcept;
  bool hasPlentyOfRoom() const noexcept;

  std::string _directory;  ///< Empty for none.
  std::string _file;
  std::string _unfinished;
  std::string _probe;
  bool _wasGivenUp = false;
};

}  // namespace tidemar
