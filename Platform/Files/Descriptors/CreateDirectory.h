#pragma once

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Makes a directory and what is missing above it, each for its owner alone. One that is there
/// already stays as it is. Throws `PlatformError`.
void createDirectory(const FileURL& directory);

}  // namespace tidemar
