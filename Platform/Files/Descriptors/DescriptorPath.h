#pragma once

#include <string>

#include "Platform/Files/Descriptors/FileDescriptor.h"
#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Where an open directory lies now: an absolute path without links. Throws PlatformError, made of
/// the operation and the item for which it is asked.
FileURL pathOfDescriptor(int directory, const FileURL& url, const std::string& operation);

/// The top directory of the mount in which an open directory lies, itself if it is one; opened only
/// as a place to work from. Throws as above.
FileDescriptor openMountRoot(int directory, const FileURL& url, const std::string& operation);

}  // namespace tidemar
