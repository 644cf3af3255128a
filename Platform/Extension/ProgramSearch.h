#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tidemar {

/// The path of the program of this name that $PATH leads to and that the user may run, if any.
std::optional<std::string> findProgram(std::string_view name);

inline bool hasProgram(std::string_view name) {
  return findProgram(name).has_value();
}

}  // namespace tidemar
