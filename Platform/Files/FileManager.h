#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Files/OpenFolder.h"
#include "TidemarCore/Date.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Where a bookmark leads now.
struct OpenedBookmark {
  std::unique_ptr<OpenFolder> folder;
  bool isStale = false;  ///< The bookmark wants to be made anew.

  /// The remembered directory wasn't found, and this is another one that lies at its old place.
  /// Such a bookmark is stale too.
  bool isReplacement = false;
};

/// The way to folders and to facts about the disk. Every operation is synchronous on the caller's
/// thread, reentrant and without shared state. Failures are thrown as `PlatformError`.
class FileManager {
 public:
  virtual ~FileManager() = default;

  /// The absolute path without links. Throws for a path that leads nowhere or holds a NUL.
  virtual std::string canonicalPath(const FileURL& url) const = 0;

  /// Opens the directory at a place, links followed.
  virtual std::unique_ptr<OpenFolder> openFolder(const FileURL& url) const = 0;

  /// Opens the directory of a bookmark. Throws where it is gone, lies in a Bin or its file system
  /// isn't there, and for bytes that are no bookmark.
  virtual OpenedBookmark openBookmark(std::string_view bookmark) const = 0;

  // Facts.

  virtual VolumeCapacity volumeCapacity(const FileURL& url) const = 0;

  /// The roots of the mounted volumes. The kernel's pseudo file systems and bind mounts of a part
  /// of a file system are left out; none of them is asked.
  virtual std::vector<FileURL> mountedVolumeURLs() const = 0;

  virtual FileURL homeDirectoryForCurrentUser() const = 0;

  /// What this platform's system and user consider a fixed place beside the roots that every
  /// platform has: the top directories of the system, the user's Desktop and Documents under
  /// their own names, the program's own data and configuration, and the Bin.
  virtual std::vector<FileURL> systemDirectoryURLs() const = 0;

  /// When the computer last started. A step of the clock doesn't make it later.
  virtual Date bootTime() const = 0;
};

}  // namespace tidemar
