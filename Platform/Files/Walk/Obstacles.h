#pragma once

#include <string>
#include <vector>

#include "Platform/Files/Descriptors/EntryValues.h"
#include "Platform/Files/Walk/TreeWalk.h"
#include "Platform/PlatformError.h"
#include "TidemarCore/Disposal.h"

namespace tidemar {

/// Whether a directory lets its entries go, as far as that shows beforehand.
struct Holder {
  int refusal = 0;             ///< An errno value that holds for every entry; 0 for none.
  bool keepsOfOthers = false;  ///< Only what is this user's own may go.
};

/// Of an open directory.
Holder holderOf(int directory, const EntryValues& values);

/// Looks through one item, as a reading delivers it, for what would stop it on its way out. To the
/// Bin it goes by one rename, for which its own place and rights count; a deletion takes each
/// entry.
class Obstacles {
 public:
  /// For the next item of a folder.
  Obstacles(const Holder& folder, Disposal disposal) : _disposal(disposal), _holders{folder} {}

  /// Each entry, the item itself first, at depth 0.
  void look(const WalkedEntry& entry);
  void failed(int code);

  /// The first one met, an errno value; 0 for none.
  int code() const noexcept { return _code; }

 private:
  void note(int code) noexcept {
    if (_code == 0) _code = code;
  }

  Disposal _disposal;
  std::vector<Holder> _holders;  ///< The directories on the way down, the folder first.
  int _code = 0;
};

/// What an obstacle's error is: with a reason of our own where the system's text wouldn't tell.
PlatformError obstacleError(const std::string& operation, const FileURL& url, int code);

/// The verb of the sentences about this way out.
std::string operationOf(Disposal disposal);

}  // namespace tidemar
