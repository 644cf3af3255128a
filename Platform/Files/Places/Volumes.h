#pragma once

#include <vector>

#include "Platform/Files/FileManager.h"
#include "Platform/Files/Places/MountTable.h"

namespace tidemar {

/// See FileManager::volumeCapacity. A file system that reports a size of 0 (one without blocks of
/// its own) reports no capacity.
VolumeCapacity readVolumeCapacity(const FileURL& url);

/// The same of the volume of an open directory; `url` is for the message.
VolumeCapacity readVolumeCapacity(int directory, const FileURL& url);

/// See FileManager::mountedVolumeURLs.
std::vector<FileURL> volumeURLs(const std::vector<Mount>& mounts);

}  // namespace tidemar
