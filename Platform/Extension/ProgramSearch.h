#pragma once

#include <string_view>

namespace tidemar {

/// Whether $PATH leads to a program of this name that the user may run.
bool hasProgram(std::string_view name);

}  // namespace tidemar
