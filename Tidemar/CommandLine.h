#pragma once

#include <optional>
#include <span>
#include <string>

namespace tidemar {

/// What a start of the program asks for.
struct CommandLine {
  bool isByDesktop = false;        ///< Not the user but the login or the bus started the program.
  std::optional<std::string> url;  ///< The bytes as they were given.

  friend bool operator==(const CommandLine&, const CommandLine&) = default;
};

/// Reads the arguments behind the program's name: none, one URL, or alone "--launched-at-login" or
/// "--launched-by-bus".
/// Throws std::invalid_argument with a sentence for any others.
CommandLine parseCommandLine(std::span<const std::string> arguments);

}  // namespace tidemar
