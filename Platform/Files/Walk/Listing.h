#pragma once

#include <vector>

#include "Platform/Files/FileManager.h"

namespace tidemar {

/// See FileManager::contentsOfDirectory.
std::vector<DirectoryEntry> listDirectory(const FileURL& directory);

/// See FileManager::resourceValues.
ResourceValues readResourceValues(const FileURL& url);

}  // namespace tidemar
