#pragma once

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Whether a path leads into a Trash, at any depth, or is one. Looks at names alone.
bool liesInTrash(const FileURL& url);

/// Where an open folder lies now. Throws PlatformError where that is in a Trash, or nowhere any
/// more. `url` is for the message.
FileURL placeOutsideTrash(int folder, const FileURL& url);

}  // namespace tidemar
