#include "Tidemar/Model/FatalFailure.h"

#include <cstdlib>

#include "Platform/PlatformError.h"
#include "Tidemar/Model/ApplicationLog.h"
#include "TidemarUI/State/Labels.h"

namespace tidemar {

void endWithFatalFailure(Alerts& alerts, const std::exception& error) {
  applicationLog().log(LogLevel::fault, "Couldn't start: %{public}s", textWithoutPath(error));
  alerts.run({.style = Alerts::Style::critical,
              .message = std::string(labels::cannotStart),
              .information = error.what(),
              .button = std::string(labels::quit)});
  std::exit(EXIT_FAILURE);
}

}  // namespace tidemar
