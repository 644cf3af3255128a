#pragma once

#include <memory>
#include <string>

#include "Platform/Files/OpenFolder.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// See OpenFolder::binnedItem. `place` is what the journal says and isn't believed: it must lie
/// directly in the `files` directory of a Trash of this user, and the item's record there must name
/// the item and, as long as something lies at the folder's recorded place, this folder. `folder` is
/// borrowed and lies at `folderURL` now. Throws PlatformError where that can't be told.
std::unique_ptr<BinnedItem> openBinnedItem(const FileURL& place, const std::string& name,
                                           int folder, const FileURL& folderURL);

/// Deletes what a put-back that is no more had copied into the open folder, in a directory of this
/// name that is surely the program's own: its original lies in the Bin until the copy is in place.
void sweepLeftCopy(int folder, const std::string& name) noexcept;

}  // namespace tidemar
