#include "Tidemar/Model/FatalFailure.h"

#include <cstdlib>

#include "Platform/PlatformError.h"
#include "Tidemar/Model/ApplicationLog.h"

namespace tidemar {

void endWithFatalFailure(Alerts& alerts, const std::exception& error) {
  applicationLog().log(LogLevel::fault, "Couldn't start: %{public}s", textWithoutPath(error));
  alerts.run({.style = Alerts::Style::critical,
              .message = "Tidemar can't start",
              .information = error.what(),
              .button = "Quit"});
  std::exit(EXIT_FAILURE);
}

}  // namespace tidemar
