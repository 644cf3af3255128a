#pragma once

#include "Platform/Desktop/Alerts.h"

namespace tidemar {

/// Alerts as modal message boxes over the active window of the application, where there is one.
class MessageBoxAlerts : public Alerts {
 public:
  void run(const Alert& alert) override;
};

}  // namespace tidemar
