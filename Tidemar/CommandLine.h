#pragma once

#include <optional>
#include <span>
#include <string>

namespace tidemar {

/// What a start of the program asks for.
struct CommandLine {
  bool isByDesktop = false;  ///< Not the user but the login or the bus started the program.
  std::optional<std::string> url = {};  ///< The bytes as they were given.
  std::string action = {};              ///< One of the desktop entry's; empty for none.
  std::string answer = {};              ///< Printed in place of a start; empty for a start.

  friend bool operator==(const CommandLine&, const CommandLine&) = default;
};

/// Reads the arguments behind the program's name: none, or alone one URL or one of the options that
/// "--help" tells, "--launched-at-login" and "--launched-by-bus". Throws std::invalid_argument
/// with a sentence for any others.
CommandLine parseCommandLine(std::span<const std::string> arguments);

}  // namespace tidemar
