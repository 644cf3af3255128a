#pragma once

#include <optional>
#include <string>
#include <vector>

#include "TidemarKit/Engine/FolderStatus.h"
#include "TidemarKit/Store/Folder.h"

namespace tidemar {

/// An item that the last run was to remove and couldn't.
struct LeftItem {
  FileURL url;
  std::string reason;  ///< A whole sentence for the user that names it.

  friend bool operator==(const LeftItem&, const LeftItem&) = default;
};

/// A folder with what was last read of it: the one value through which the screens see a folder.
struct FolderReport {
  Folder folder;
  std::optional<FolderStatus> status;  ///< None when the folder could not be read.
  std::vector<LeftItem> left = {};     ///< In the order of the attempts; not all where it's many.

  friend bool operator==(const FolderReport&, const FolderReport&) = default;
};

}  // namespace tidemar
