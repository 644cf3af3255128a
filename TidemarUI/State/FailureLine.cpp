#include "TidemarUI/State/FailureLine.h"

#include <algorithm>

#include "Platform/PlatformError.h"
#include "Platform/Text.h"
#include "TidemarKit/Engine/Failure.h"
#include "TidemarUI/State/PathName.h"

namespace tidemar {
namespace {

struct Sentence {
  const std::string& bin;

  // A folder that is forgotten takes its journal along, so both mean the same to the user.
  std::string operator()(const EngineFailure::FolderNotFound&) const {
    return "Tidemar no longer knows about that folder.";
  }
  std::string operator()(const EngineFailure::JournalEntryNotFound&) const {
    return "Tidemar no longer knows about that folder.";
  }
  std::string operator()(const EngineFailure::ChangedSincePlanned& failure) const {
    return nameOfPath(failure.path) + " changed, so it was left alone.";
  }
  std::string operator()(const EngineFailure::GoneFromBin&) const {
    return "An item is no longer in the " + bin + ".";
  }
  std::string operator()(const EngineFailure::OriginalPathTaken& failure) const {
    return "Something new is already called " + nameOfPath(failure.path) + " in " +
           nameOfParent(failure.path) + ", so it was left in the " + bin + ".";
  }
  std::string operator()(const EngineFailure::DeletedPermanently&) const {
    return "Items deleted permanently can't be put back.";
  }
  std::string operator()(const EngineFailure::AlreadyUndone&) const {
    return "Those items were already put back.";
  }
};

}  // namespace

std::string failureLine(const std::exception& error, const std::string& bin) {
  if (const auto* failure = dynamic_cast<const EngineFailure*>(&error))
    return std::visit(Sentence{bin}, failure->failure());
  return displayText(error.what());
}

std::string leftItemLine(const std::string& path, const std::exception& error,
                         const std::string& bin) {
  if (dynamic_cast<const EngineFailure*>(&error) != nullptr) return failureLine(error, bin);
  const auto* refusal = dynamic_cast<const PlatformError*>(&error);
  if (refusal == nullptr) return nameOfPath(path) + ": " + displayText(error.what());
  const std::string& refused = refusal->url().path();
  // It may be something within the item that keeps all of it.
  const std::string part = refused == path ? "" : " " + nameOfPath(refused);
  return nameOfPath(path) + ": couldn't " + refusal->operation() + part + ": " +
         displayText(refusal->reason()) + ".";
}

std::string putBackFailureText(std::vector<std::string> lines) {
  std::ranges::sort(lines);
  const auto repeated = std::ranges::unique(lines);
  lines.erase(repeated.begin(), repeated.end());
  std::string text;
  for (const std::string& line : lines) {
    if (!text.empty()) text += '\n';
    text += line;
  }
  return text;
}

std::string addingFolder(const std::string& path) {
  return "add " + nameOfPath(path);
}

std::string settingTemporary(const std::string& path, bool isTemporary) {
  return isTemporary ? "make " + nameOfPath(path) + " Temporary" : "make the folder plain again";
}

std::string removingFolder(const std::string& path) {
  return "remove " + nameOfPath(path);
}

std::string changingSettings() {
  return "save the folder's settings";
}

std::string settingOpensAtLogin(bool isOn) {
  return isOn ? "turn on Open at login" : "turn off Open at login";
}

std::string checkingForUpdates() {
  return "check for updates";
}

std::string switchingExtension(const std::string& fileManager, bool isOn) {
  return (isOn ? "turn on the extension for " : "turn off the extension for ") + fileManager;
}

std::string failureTitle(const std::string& action) {
  return "Couldn't " + action;
}

}  // namespace tidemar
