#pragma once

#include <string>

namespace tidemar {

/// The last component of a path of file-system bytes, as text that can be shown.
std::string nameOfPath(const std::string& path);

/// The last component of the path's parent, as text that can be shown.
std::string nameOfParent(const std::string& path);

}  // namespace tidemar
