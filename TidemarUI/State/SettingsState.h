#pragma once

namespace tidemar {

/// Everything that the settings window shows.
struct SettingsState {
  bool openAtLogin = false;                  ///< The login item is on.
  bool openAtLoginRequiresApproval = false;  ///< It waits for the user's approval.
  bool showInMenuBar = true;                 ///< The menu bar icon is shown.

  friend bool operator==(const SettingsState&, const SettingsState&) = default;
};

}  // namespace tidemar
