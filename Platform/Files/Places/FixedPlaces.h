#pragma once

#include <vector>

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// See FileManager::systemDirectoryURLs.
std::vector<FileURL> systemDirectoryURLs();

}  // namespace tidemar
