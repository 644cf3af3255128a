#pragma once

#include <string>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Where an open directory lies now: an absolute path without links. Throws PlatformError, made of
/// the operation and the item for which it is asked.
FileURL pathOfDescriptor(int directory, const FileURL& url, const std::string& operation);

/// Whether a path leads to this open directory now: not so if it was moved, replaced or deleted, or
/// if its drive was taken away, after which the kernel's path of it leads anywhere.
bool leadsTo(const FileURL& path, int directory);

/// The top directory of the mount in which an open directory lies, itself if it is one; opened only
/// as a place to work from. Throws as above.
FileDescriptor openMountRoot(int directory, const FileURL& url, const std::string& operation);

}  // namespace tidemar
