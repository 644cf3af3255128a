#pragma once

#include <exception>

#include "Platform/Desktop/Alerts.h"

namespace tidemar {

/// Logs why the application can't run, tells the user, and ends the process.
[[noreturn]] void endWithFatalFailure(Alerts& alerts, const std::exception& error);

}  // namespace tidemar
