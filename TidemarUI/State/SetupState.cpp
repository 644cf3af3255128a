#include "TidemarUI/State/SetupState.h"

#include "TidemarUI/State/Labels.h"

namespace tidemar {
namespace {

SetupStep extensionStep(const SetupState& state) {
  SetupStep step{.isDone = state.isExtensionEnabled,
                 .title = "Turn on the Finder extension",
                 .description = "Adds \"Tidemar: Make Temporary…\" to Finder's right-click menu."};
  if (!step.isDone) {
    step.offer = SetupOffer::openExtensionManagement;
    step.offerTitle = "Open Extension Settings…";
    // There is no page of the system's own to point at: the button opens a window of ours.
    step.hint = "One switch for each file manager on this computer";
  }
  return step;
}

SetupStep loginStep(const SetupState& state) {
  SetupStep step{.isDone = state.isOpenAtLogin,
                 .title = labels::openAtLogin,
                 .description =
                     "Clears temporary folders in the background on launch, hourly, and after "
                     "wake."};
  // Approval comes first: without it a login item that is on does nothing.
  if (state.isOpenAtLoginRequiresApproval) {
    step.offer = SetupOffer::openLoginItemsSettings;
    step.offerTitle = labels::openLoginItems;
  } else if (!state.isOpenAtLogin) {
    step.offer = SetupOffer::enableAtLogin;
    step.offerTitle = "Enable at Login";
  }
  return step;
}

SetupStep notificationsStep(const SetupState& state) {
  SetupStep step{.isDone = state.isNotificationsEnabled,
                 .title = "Notifications",
                 .note = "(optional)",
                 .description = "A calm daily summary before items are removed."};
  if (!step.isDone) {
    step.offer = SetupOffer::requestNotifications;
    step.offerTitle = "Allow Notifications";
  }
  return step;
}

}  // namespace

std::array<SetupStep, 3> setupSteps(const SetupState& state) {
  return {extensionStep(state), loginStep(state), notificationsStep(state)};
}

std::string_view setupMarkLabel(bool isDone) {
  return isDone ? "Completed" : "Not completed";
}

}  // namespace tidemar
