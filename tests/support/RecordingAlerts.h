#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Platform/Desktop/Alerts.h"

namespace tidemar::testing {

/// Writes down what the user would be told.
struct RecordingAlerts : Alerts {
  void run(const Alert& alert) override {
    told.push_back(alert.message + "\n" + alert.information);
    if (whileShown) whileShown();
  }
  std::vector<std::string> told;
  std::function<void()> whileShown;
};

}  // namespace tidemar::testing
