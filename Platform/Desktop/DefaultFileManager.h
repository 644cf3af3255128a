#pragma once

#include <string>

/// The program that opens folders on this desktop.
namespace tidemar::DefaultFileManager {

/// Its name as the user knows it, such as "Dolphin": what its desktop entry says, without the kind
/// of program that some entries add. Empty where none is known. Reads a few small files anew each
/// time, by the freedesktop specification of associations between MIME types and applications.
std::string name();

}  // namespace tidemar::DefaultFileManager
