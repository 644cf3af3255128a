#pragma once

#include <string>
#include <string_view>

#include "Platform/Files/FileManager.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Bytes by which a directory is found again after it was renamed or moved on its file system, or
/// after that was mounted anew. They keep nothing open. A link is followed to the directory that it
/// leads to. Throws PlatformError.
std::string makeBookmark(const FileURL& directory);

/// The directory of a bookmark, by a path without links:
/// 1. the one at the remembered path, if it is the same directory;
/// 2. else the same directory where a bounded search finds it (stale);
/// 3. else another directory at exactly the remembered path on the same file system (stale, a
///    replacement).
/// Throws PlatformError where there is none of these: ENOENT where it is gone, its drive isn't
/// there or it lies in a Trash; EINVAL for bytes that are no bookmark.
ResolvedBookmark resolveBookmark(std::string_view bookmark);

}  // namespace tidemar
