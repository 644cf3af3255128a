#pragma once

#include <QWidget>
#include <array>
#include <functional>

#include "TidemarUI/State/SetupState.h"

namespace tidemar {

class SetupStepView;

/// The checklist of what the user has to switch on in the system.
class SetupView : public QWidget {
 public:
  explicit SetupView(const SystemNames& names = {}, QWidget* parent = nullptr);

  std::function<void()> onOpenExtensionManagement;
  std::function<void(bool isOn)> onToggleOpenAtLogin;
  std::function<void()> onOpenLoginItemsSettings;
  std::function<void()> onRequestNotifications;

  void setState(const SetupState& state);

 private:
  void accept(SetupOffer offer) const;

  SystemNames _names;
  std::array<SetupStepView*, 3> _steps{};
};

}  // namespace tidemar
