#pragma once

#include <array>
#include <string>
#include <string_view>

#include "TidemarUI/State/SystemNames.h"

namespace tidemar {

/// Everything that the setup window shows follows from this.
struct SetupState {
  bool isExtensionEnabled = false;             ///< The file manager shows the command.
  bool isOpenAtLogin = false;                  ///< The login item is on.
  bool isOpenAtLoginRequiresApproval = false;  ///< It waits for the user's approval.
  bool isNotificationsEnabled = false;         ///< Notifications are authorized.
  bool wereNotificationsRefused = false;       ///< They were asked for, in vain.

  friend bool operator==(const SetupState&, const SetupState&) = default;
};

/// What the button of a step does.
enum class SetupOffer {
  none,  ///< There is no button.
  openExtensionManagement,
  enableAtLogin,
  openLoginItemsSettings,
  requestNotifications,
};

/// One step of the checklist. Empty texts aren't shown.
struct SetupStep {
  bool isDone = false;
  std::string title;
  std::string_view note = {};  ///< Beside the title.
  std::string description;
  SetupOffer offer = SetupOffer::none;
  std::string_view offerTitle = {};
  std::string_view hint = {};  ///< Under the button.

  friend bool operator==(const SetupStep&, const SetupStep&) = default;
};

/// The steps from top to bottom.
std::array<SetupStep, 3> setupSteps(const SetupState& state, const SystemNames& names = {});

/// What a screen reader says of a step's mark.
std::string_view setupMarkLabel(bool isDone);

}  // namespace tidemar
