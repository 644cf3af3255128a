#pragma once

#include <string>

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Throws PlatformError (EXDEV) if an entry is the root of another mount or subvolume, or holds a
/// mount anywhere below it, even in a part that can't be read.
void refuseMounts(int parentDescriptor, const std::string& name, const FileURL& url,
                  const std::string& operation);

/// Throws PlatformError (EBUSY) if a directory is, or holds anywhere below it, the home folder or
/// one of `systemDirectoryURLs`: what is never cleared must not go with a folder above it.
void refuseFixedPlaces(int parentDescriptor, const std::string& name, const FileURL& url,
                       const std::string& operation);

/// What a refused item's error is.
[[noreturn]] void refuseBoundary(const FileURL& url, const std::string& operation);

/// Throws PlatformError (EXDEV) if an entry is, or holds anywhere below it, the root of another
/// mount or subvolume; or if that can't be told. `operation` is the verb of the message.
void refuseMountsAndSubvolumes(int parentDescriptor, const std::string& name, const FileURL& url,
                               const std::string& operation);

}  // namespace tidemar
