#pragma once

#include <exception>
#include <string>
#include <vector>

namespace tidemar {

/// An error as one sentence for the user: that of an `EngineFailure`, or else what the error says
/// of itself.
std::string failureLine(const std::exception& error, const std::string& bin);

/// Why an item stayed that was to go, as one sentence that names it.
std::string leftItemLine(const std::string& path, const std::exception& error,
                         const std::string& bin);

/// The text under "Some items couldn't be put back": each sentence once, sorted, a line each.
std::string putBackFailureText(std::vector<std::string> lines);

/// What failed, as the verb phrase behind "Couldn't". Paths are bytes of the file system, of which
/// the last component is named.
std::string addingFolder(const std::string& path);
std::string settingTemporary(const std::string& path, bool isTemporary);
std::string removingFolder(const std::string& path);
std::string changingSettings();
std::string settingOpensAtLogin(bool isOn);
std::string checkingForUpdates();

/// `fileManager` is what the user knows it by.
std::string switchingExtension(const std::string& fileManager, bool isOn);

/// The title over the sentence: "Couldn't {action}".
std::string failureTitle(const std::string& action);

}  // namespace tidemar
