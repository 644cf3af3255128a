#pragma once

#include <cstdint>
#include <map>
#include <mutex>

#include "TidemarCore/TemporarySettings.h"
#include "TidemarKit/Store/Store.h"

namespace tidemar {

/// The user's edits of folders' settings between their making and their writing. An edit is what
/// the user changed against what the screen showed, so that it takes nothing else back; those of
/// one folder are written in the order in which they were made, whichever thread comes first.
/// Thread-safe.
class PendingEdits {
 public:
  using Number = std::uint64_t;

  /// The next edit: what differs between `shown` and `wanted`.
  Number add(std::int64_t folderID, const TemporarySettings& shown,
             const TemporarySettings& wanted);

  /// Writes the edit and the earlier ones of its folder to the row as it stands now, unless a later
  /// one was written along with it. After a failure the edit is dropped. Throws `DatabaseError`.
  void write(Store& store, Number number);

 private:
  struct Edit {
    std::int64_t folderID = 0;
    TemporarySettings shown;
    TemporarySettings wanted;
  };

  std::mutex _mutex;
  std::map<Number, Edit> _edits;
  Number _last = 0;
};

}  // namespace tidemar
