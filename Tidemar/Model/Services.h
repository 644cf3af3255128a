#pragma once

#include <functional>

#include "Platform/Desktop/Alerts.h"
#include "Platform/Desktop/FinderExtension.h"
#include "Platform/Desktop/LoginItem.h"
#include "Platform/Desktop/NotificationCenter.h"
#include "Platform/Files/FileManager.h"
#include "Platform/Locale/Calendar.h"
#include "Platform/UserDefaults.h"
#include "Tidemar/Model/Executor.h"
#include "TidemarCore/Date.h"

namespace tidemar {

/// What the model needs of the platform. All of it outlives the model. `fileManager` and
/// `currentDate` are used from any thread, the rest on the main thread.
struct Services {
  Executor& executor;
  const FileManager& fileManager;
  NotificationCenter& notifications;
  LoginItem& loginItem;
  FinderExtension& finderExtension;
  Alerts& alerts;
  UserDefaults& standardDefaults;
  UserDefaults& sharedDefaults;
  std::function<Date()> currentDate;
  std::function<double()> secondsSinceBoot;  ///< By a clock that nobody sets; counts sleep.
  std::function<Calendar()> currentCalendar;
};

}  // namespace tidemar
