#pragma once

#include <optional>

#include "TidemarCore/FileURL.h"

/// The user's base directories by the freedesktop Base Directory specification, read from the
/// environment anew each time. A variable that isn't an absolute path counts as not set.
namespace tidemar::StandardDirectories {

/// $HOME, else the home of the user database, else "/".
FileURL home();

/// $XDG_DATA_HOME, else ~/.local/share.
FileURL data();

/// $XDG_CONFIG_HOME, else ~/.config.
FileURL configuration();

/// $XDG_RUNTIME_DIR; none where it isn't set.
std::optional<FileURL> runtime();

}  // namespace tidemar::StandardDirectories
