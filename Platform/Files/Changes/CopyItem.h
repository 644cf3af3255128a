#pragma once

#include <string>

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Copies an entry of an open directory, a tree with all that lies in it, to a name in another open
/// directory at which nothing lies: links as links, with owners, modes, times, access lists,
/// extended attributes, hard links and holes as far as the new file system can keep them. `url` and
/// `operation` are for the PlatformError that is thrown on failure; then a part of the copy may be
/// there. Waits until it is done.
void copyItem(int fromDirectory, const std::string& fromName, int toDirectory,
              const std::string& toName, const FileURL& url, const std::string& operation);

}  // namespace tidemar
