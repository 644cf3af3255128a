#pragma once

#include "Platform/Desktop/Alerts.h"

namespace tidemar {

/// Alerts as modal dialogs over the window that the user works in, else over any window of the
/// application, else in front of everything.
class ModalAlerts : public Alerts {
 public:
  void run(const Alert& alert) override;
};

}  // namespace tidemar
