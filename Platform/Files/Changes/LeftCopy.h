#pragma once

#include <string>

#include "Platform/Files/Changes/PrivateDirectory.h"

namespace tidemar {

/// Deletes the copy that lies in place 0 of a private directory, whatever its modes: follows no
/// link and enters no other mount or subvolume. Answers 0 or an errno value: EEXIST where more than
/// one entry lies there, which is then none of the program's doing and is left. On failure a part
/// may be left. Throws std::system_error where a directory can't be read.
int deleteCopy(const PrivateDirectory& directory);

/// Deletes what a put-back that is no more had copied into the open folder, in a directory of this
/// name that is surely the program's own: its original lies in the Bin until the copy is in place.
/// One that a put-back is using is left alone; what can't be deleted waits for the next call.
void sweepLeftCopy(int folder, const std::string& name) noexcept;

}  // namespace tidemar
