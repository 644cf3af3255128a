#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Files/ItemState.h"

namespace tidemar {

/// Which names of one directory are hidden: those that begin with "." and those that stand in its
/// file `.hidden`, one exact name a line, as the file managers read it.
class HiddenList {
 public:
  /// A directory without such a file.
  HiddenList() = default;

  /// Reads the file of an open directory. A missing one, a link and anything else that isn't a
  /// regular file hide nothing. Throws std::system_error for a file that can't be read or is over 1
  /// MiB: then nothing says what is hidden.
  static HiddenList ofDirectory(int directory);

  /// The list that a file of this content makes.
  static HiddenList parse(std::string_view content);

  bool hides(std::string_view name) const;

 private:
  std::vector<std::string> _names;
};

/// The list of one directory, read again only when its file has changed.
class HiddenListReader {
 public:
  /// Throws as `HiddenList::ofDirectory` does. Valid until the next call.
  const HiddenList& list(int directory);

 private:
  struct State {
    EntryIdentity file;
    Timestamp change;

    friend bool operator==(const State&, const State&) = default;
  };

  std::optional<State> _state;  ///< Of the file that was read; none where it must be read.
  HiddenList _list;
};

}  // namespace tidemar
