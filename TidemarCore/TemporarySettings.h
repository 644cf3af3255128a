#pragma once

#include <cstdint>
#include <optional>

#include "TidemarCore/Disposal.h"

namespace tidemar {

/// A folder's rules. As made, they are those of a newly added folder: items of 90 days go to the
/// Bin, nothing else does. The numbers are used as they stand, without bounds.
struct TemporarySettings {
  /// Age rule: days after its freshness at which an item goes. Off without a number.
  std::optional<std::int64_t> maxAgeDays = 90;

  /// Size rule: the folder's limit in bytes. Off without a number.
  std::optional<std::int64_t> sizeLimit;

  /// Low-disk rule. Has no effect while `disposal` is `bin`: a move to the Bin frees no space.
  bool automatic = false;

  /// Restart rule.
  bool emptyOnRestart = false;

  Disposal disposal = Disposal::bin;

  friend bool operator==(const TemporarySettings&, const TemporarySettings&) = default;
};

}  // namespace tidemar
