#pragma once

#include <memory>
#include <string>

#include "Platform/Files/OpenFolder.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// See OpenFolder::binnedItem. `place` is what the journal says and isn't believed: it must lie
/// directly in the `files` directory of a Trash of this user, and the item's record there must name
/// the item and, as long as something lies at the folder's recorded place, this folder. `folder` is
/// borrowed and lies at `folderURL` now. Throws PlatformError where that can't be told, and where
/// the folder lies in a Trash itself.
std::unique_ptr<BinnedItem> openBinnedItem(const FileURL& place, const std::string& name,
                                           int folder, const FileURL& folderURL);

}  // namespace tidemar
