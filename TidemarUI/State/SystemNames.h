#pragma once

#include <string>

namespace tidemar {

/// What the texts call other parts of the system, as the user knows them.
struct SystemNames {
  std::string fileManager = "Finder";  ///< The program that shows folders.
  std::string computer = "Mac";

  friend bool operator==(const SystemNames&, const SystemNames&) = default;
};

}  // namespace tidemar
