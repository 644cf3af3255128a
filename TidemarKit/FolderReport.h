#pragma once

#include <optional>

#include "TidemarKit/Engine/FolderStatus.h"
#include "TidemarKit/Store/Folder.h"

namespace tidemar {

/// A folder with what was last read of it: the one value through which the screens see a folder.
struct FolderReport {
  Folder folder;
  std::optional<FolderStatus> status;  ///< None when the folder could not be read.

  friend bool operator==(const FolderReport&, const FolderReport&) = default;
};

}  // namespace tidemar
