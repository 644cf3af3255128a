#pragma once

#include <string>
#include <string_view>

namespace tidemar {

/// File-system bytes as text that can be shown: valid UTF-8, with U+FFFD for each byte sequence
/// that isn't. For display alone; never a way back to the file.
std::string displayText(std::string_view bytes);

}  // namespace tidemar
