#pragma once

#include <functional>
#include <vector>

#include "Platform/Locale/Formats.h"
#include "Platform/UserDefaults.h"
#include "Tidemar/Model/AppModel.h"
#include "Tidemar/Updates.h"
#include "TidemarCore/FileURL.h"
#include "TidemarUI/State/SystemNames.h"

namespace tidemar {

/// What the screens have in common: the model, and the ways out of them to the desktop. All of it
/// outlives them. Main thread.
struct ScreenContext {
  AppModel& model;
  Updates& updates;
  UserDefaults& defaults;
  std::function<Date()> currentDate;
  std::function<Formats()> currentFormats;
  std::function<void(const std::vector<FileURL>&)> showInFileManager;
  std::function<void()> showExtensionManagement;
  std::function<void()> openLoginItemsSettings;
  std::function<void()> quit;
  SystemNames names = {};
};

/// Whether the icon is wanted in the menu bar.
inline constexpr const char* showInMenuBarKey = "showInMenuBar";

}  // namespace tidemar
