#pragma once

#include <string>
#include <string_view>

#include "TidemarUI/State/SystemNames.h"

/// The words of the screens that stand as they are, whatever the state. All other texts come from
/// the builders beside this file, so that the views hold no wording.
/// A text that speaks of another part of the system takes the names of such parts.
namespace tidemar::labels {

// The popover
inline std::string finderExtensionIsOff(const SystemNames& names) {
  return names.fileManager + " extension is off";
}
inline constexpr std::string_view turnOn = "Turn On";
inline std::string menuBarInvitation(const SystemNames& names) {
  return "Right-click a folder in " + names.fileManager +
         " and choose Tidemar: Make Temporary… to start.";
}
inline constexpr std::string_view folders = "Folders";
inline constexpr std::string_view recent = "Recent";
inline constexpr std::string_view openTidemar = "Open Tidemar";
inline constexpr std::string_view quitTidemar = "Quit Tidemar";
inline constexpr std::string_view putBack = "Put Back";
inline std::string showInFinder(const SystemNames& names) {
  return "Show in " + names.fileManager;
}

// Where a folder or its forecast would stand
inline constexpr std::string_view now = "Now";
inline constexpr std::string_view cannotReadFolder = "Can't read this folder";

// The main window
inline constexpr std::string_view overview = "Overview";
inline constexpr std::string_view removeFromTidemar = "Remove from Tidemar";
inline constexpr std::string_view addAFolder = "Add a folder";
inline std::string overviewInvitation(const SystemNames& names) {
  return "Add a folder with + or right-click one in " + names.fileManager +
         " and choose Tidemar: Make Temporary…";
}
inline constexpr std::string_view addPrompt = "Add";
inline constexpr std::string_view menu = "Menu";

// A folder's detail screen
inline constexpr std::string_view temporary = "Temporary";
inline constexpr std::string_view temporaryExplanation =
    "Clears old things out of this folder by the rules below.";
inline constexpr std::string_view whatGoes = "What goes";
inline constexpr std::string_view clearAnItemWhen = "Clear an item when";
inline constexpr std::string_view ageRule = "Not added or changed for";
inline constexpr std::string_view sizeRule = "The folder is over";
inline constexpr std::string_view automaticRule = "The disk is nearly full";
inline std::string restartRule(const SystemNames& names) {
  return "The " + names.computer + " restarts";
}
inline constexpr std::string_view clearedItems = "Cleared items";
inline constexpr std::string_view deleteConfirmationTitle = "Delete cleared items permanently?";
inline constexpr std::string_view deletePermanently = "Delete Permanently";
inline constexpr std::string_view cancel = "Cancel";

// The settings window
inline constexpr std::string_view settingsTitle = "Tidemar Settings";
inline constexpr std::string_view openAtLogin = "Open at login";
inline constexpr std::string_view needsApproval = "Needs your approval in System Settings.";
inline constexpr std::string_view openLoginItems = "Open Login Items…";
inline constexpr std::string_view showInMenuBar = "Show in menu bar";
inline constexpr std::string_view settingsFooter =
    "Tidemar keeps clearing your folders when its icon is hidden.";
inline std::string setUpExplanation(const SystemNames& names) {
  return names.fileManager + " extension, login and notifications";
}
inline constexpr std::string_view setUp = "Set Up…";

// The setup window
inline constexpr std::string_view setupWindowTitle = "Set Up Tidemar";
inline constexpr std::string_view setupTitle = "Tidemar Setup";
inline std::string setupExplanation(const SystemNames& names) {
  return "Configure " + names.fileManager + " integration and background cleaning.";
}

// The window of the file-manager extension
inline constexpr std::string_view extensionTitle = "Tidemar Extension";
inline constexpr std::string_view extensionExplanation =
    "Adds “Tidemar: Make Temporary…” to the right-click menu of:";
inline constexpr std::string_view extensionHint =
    "A file manager that is open shows the change once it was quit and opened again.";
inline constexpr std::string_view noFileManager =
    "No file manager was found that Tidemar can extend. It knows Dolphin, Files (Nautilus), Nemo, "
    "Caja, Thunar, PCManFM and PCManFM-Qt.";
inline constexpr std::string_view whatPCManFMNeeds =
    "PCManFM shows the command only where Tidemar and libfm-modules are installed as packages.";

// Without a window and an icon
inline constexpr std::string_view goesOn = "Tidemar goes on without a window";
inline constexpr std::string_view goesOnExplanation =
    "It keeps clearing your folders. To see it again, open Tidemar from your applications.";

// The application
inline constexpr std::string_view tidemar = "Tidemar";
inline constexpr std::string_view settings = "Settings…";
inline constexpr std::string_view checkForUpdates = "Check for Updates…";
inline constexpr std::string_view someItemsNotPutBack = "Some items couldn't be put back";
inline constexpr std::string_view cannotStart = "Tidemar can't start";
inline constexpr std::string_view quit = "Quit";
inline constexpr std::string_view isUpToDate = "Tidemar is up to date.";
inline constexpr std::string_view newVersion = "A new version of Tidemar is available.";
inline constexpr std::string_view newVersionHint = "Install it with your system's updates.";

}  // namespace tidemar::labels
