#pragma once

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Moves an item to the Trash of its own file system, by the freedesktop Trash specification 1.0,
/// and answers where it lies there; see FileManager::trashItem. Nothing is copied, nothing that
/// lies in a Trash is replaced, and on failure the item is where it was and no record of it is
/// left.
FileURL trashItem(const FileURL& url);

}  // namespace tidemar
