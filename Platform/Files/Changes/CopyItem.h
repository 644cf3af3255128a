#pragma once

#include <string>

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Copies an entry of an open directory, a tree with all that lies in it, to a name in another open
/// directory at which nothing lies: links as links, with owners, modes, times, access lists,
/// extended attributes, hard links and holes. Owners are kept as far as this user may give files
/// away; all else that the new file system can't keep is a failure. Other mounts in the tree are
/// left out. Waits until it is done.
///
/// A program of its own does the work, which ends with the thread that called this and holds the
/// target's open directory, and with it a lock on that, for as long as it still writes. `url` and
/// `operation` are for the PlatformError that is thrown on failure; then a part of the copy may be
/// there.
void copyItem(int fromDirectory, const std::string& fromName, int toDirectory,
              const std::string& toName, const FileURL& url, const std::string& operation);

}  // namespace tidemar
