#pragma once

#include <optional>

#include "Platform/Files/Bookmarks/BookmarkRecord.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Looks for the directory of a bookmark where it may have been moved: first around its old place
/// and in the user's own directories, then in the whole file system, wherever that is mounted.
/// Breadth first, so that near places come before deep ones. Reads directories alone, follows no
/// link, crosses into no mount or subvolume, looks into no Trash, and gives up after a bounded
/// number of entries and well under a second.
///
/// The path that it answers has no links. None where the directory wasn't met.
std::optional<FileURL> searchForDirectory(const BookmarkRecord& bookmark);

}  // namespace tidemar
