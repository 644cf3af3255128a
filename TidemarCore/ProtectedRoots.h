#pragma once

#include <span>
#include <vector>

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// The folders that are never cleared, whatever tag or rule they carry: the system's, the home
/// folder with its Desktop, Documents and Library, and the root of every volume. Only these
/// themselves: what lies inside one of them may be cleared.
std::vector<FileURL> protectedRootURLs(const FileURL& home, std::span<const FileURL> volumes);

}  // namespace tidemar
