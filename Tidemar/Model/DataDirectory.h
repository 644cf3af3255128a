#pragma once

#include "TidemarCore/FileURL.h"

namespace tidemar {

/// The directory of all that Tidemar remembers: the database, and what keeps it safe. Makes it
/// where it isn't there, for its owner alone. Throws `PlatformError`.
FileURL makeDataDirectory();

}  // namespace tidemar
