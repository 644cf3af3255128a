#pragma once

#include <string>
#include <string_view>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Bytes by which an open directory is found again after it was renamed or moved on its file
/// system, or after that was mounted anew. They keep nothing open. `url` is for the PlatformError
/// that is thrown on failure.
std::string makeBookmark(int directory, const FileURL& url);

/// The directory to which a bookmark leads, open, and where it lies: a path without links.
struct BookmarkedDirectory {
  FileDescriptor directory;
  FileURL url;
  bool isStale = false;  ///< See OpenedBookmark, as for the next.
  bool isReplacement = false;
};

/// Opens the directory of a bookmark:
/// 1. the one at the remembered path, if it is the same directory;
/// 2. else the same directory where a bounded search finds it (stale);
/// 3. else another directory at exactly the remembered path on the same file system (stale, a
///    replacement).
/// Throws PlatformError where there is none of these: ENOENT where it is gone, its drive isn't
/// there or it lies in a Trash; EINVAL for bytes that are no bookmark.
BookmarkedDirectory openBookmark(std::string_view bookmark);

}  // namespace tidemar
