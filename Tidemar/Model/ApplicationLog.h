#pragma once

#include "Platform/Logger.h"

namespace tidemar {

/// The logger of the application: subsystem "app.quernly.tidemar", category "app". Any thread.
const Logger& applicationLog();

}  // namespace tidemar
