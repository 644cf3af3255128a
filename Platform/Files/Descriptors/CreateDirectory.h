#pragma once

#include <string>

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// Makes a directory and what is missing above it, each for its owner alone. One that is there
/// already stays as it is; links in the path are followed. Throws `PlatformError`, made of the
/// operation.
void createDirectory(const FileURL& directory, const std::string& operation = "create the folder");

}  // namespace tidemar
