#pragma once

#include <optional>

#include "Platform/Files/Bookmarks/BookmarkRecord.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Looks for the directory of a bookmark where it may have been moved: first around its old place
/// and in the user's own directories, then in the whole file system, wherever that is mounted.
/// Breadth first, so that near places come before deep ones. Reads directories alone, follows no
/// link, crosses into no mount or subvolume, looks into no Trash, and touches no mount that may
/// never answer.
///
/// Directories are counted and entries aren't, so a directory that was renamed among any number of
/// neighbours is found. Gives up after a bounded number of directories and half a second. Only
/// where the first few alone take longer, it goes on for up to ten seconds: a slow or busy machine
/// doesn't lose what is near.
///
/// The path that it answers has no links. None where the directory wasn't met. Throws PlatformError
/// where the mounts can't be told.
std::optional<FileURL> searchForDirectory(const BookmarkRecord& bookmark);

}  // namespace tidemar
