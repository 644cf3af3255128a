#include "TidemarUI/State/SetupState.h"

#include "TidemarUI/State/Labels.h"

namespace tidemar {
namespace {

/// "Dolphin's", and "Files'" of a name that ends like a plural.
std::string possessive(const std::string& name) {
  return name + (name.ends_with('s') ? "'" : "'s");
}

SetupStep extensionStep(const SetupState& state, const SystemNames& names) {
  SetupStep step{.isDone = state.isExtensionEnabled,
                 .title = "Turn on the " + names.fileManager + " extension",
                 .description = "Adds \"Tidemar: Make Temporary…\" to " +
                                possessive(names.fileManager) + " right-click menu."};
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
                 .title = std::string(labels::openAtLogin),
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
    if (state.wereNotificationsRefused)
      step.hint =
          "Nothing on this desktop shows notifications. Start a notification service first.";
  }
  return step;
}

}  // namespace

std::array<SetupStep, 3> setupSteps(const SetupState& state, const SystemNames& names) {
  return {extensionStep(state, names), loginStep(state), notificationsStep(state)};
}

std::string_view setupMarkLabel(bool isDone) {
  return isDone ? "Completed" : "Not completed";
}

}  // namespace tidemar
