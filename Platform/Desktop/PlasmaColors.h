#pragma once

#include <QPalette>
#include <optional>

/// The colours that are chosen in Plasma's settings. The toolkit reads them at the start alone;
/// this reads them anew each time. Any thread.
namespace tidemar::PlasmaColors {

/// None on another desktop, or where the user keeps Plasma's first ones.
std::optional<QPalette> palette();

}  // namespace tidemar::PlasmaColors
