#pragma once

#include <string>

/// The system's Bin.
namespace tidemar::SystemBin {

/// Its name as the user knows it, which every text that speaks of the Bin takes. The desktops here
/// have no name for it that a program could ask for, so it is always "Bin".
std::string name();

}  // namespace tidemar::SystemBin
