#pragma once

#include <string>

namespace tidemar {

/// Gives an entry another place in one step, if nothing lies there yet: what lies there is never
/// replaced. Both directories are open descriptors (O_PATH is enough). Follows no link. Answers 0,
/// or an errno value: EEXIST where something lies at the new place, EXDEV where that is another
/// mount or subvolume. On failure the entry is where it was.
///
/// File systems that can't refuse to replace are served by steps that are as safe; where there are
/// none the answer is a failure.
int renameWithoutReplacing(int fromDirectory, const std::string& fromName, int toDirectory,
                           const std::string& toName) noexcept;

}  // namespace tidemar
