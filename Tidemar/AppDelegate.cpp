#include "Tidemar/AppDelegate.h"

#include <QApplication>
#include <QWindow>
#include <chrono>
#include <cstdlib>
#include <iostream>

#include "Platform/Desktop/ApplicationInstance.h"
#include "Platform/Desktop/FileManagerExtension.h"
#include "Platform/Desktop/MessageBoxAlerts.h"
#include "Platform/Desktop/UnavailableServices.h"
#include "Platform/Desktop/WakeNotifier.h"
#include "Platform/Files/DiskFileManager.h"
#include "Platform/UserDefaults.h"
#include "Tidemar/Model/AppModel.h"

namespace tidemar {
namespace {

Date currentDate() {
  const std::chrono::duration<double> sinceEpoch =
      std::chrono::system_clock::now().time_since_epoch();
  return {sinceEpoch.count()};
}

std::vector<std::int64_t> integers(const QVariantList& values) {
  std::vector<std::int64_t> result;
  for (const QVariant& value : values) {
    bool isInteger = false;
    const std::int64_t integer = value.toLongLong(&isInteger);
    if (isInteger) result.push_back(integer);
  }
  return result;
}

}  // namespace

/// The real platform, in the order in which the model needs it.
struct PlatformServices {
  DiskFileManager fileManager;
  UnavailableNotificationCenter notifications;
  UnavailableLoginItem loginItem;
  MessageBoxAlerts alerts;
  FileManagerExtension finderExtension{alerts};
  UserDefaults standardDefaults = UserDefaults::standard();
  UserDefaults sharedDefaults = UserDefaults::shared();
  WakeNotifier wakeNotifier;
};

AppDelegate::AppDelegate() : _platform(std::make_unique<PlatformServices>()) {}

AppDelegate::~AppDelegate() = default;

bool AppDelegate::start(const std::vector<std::string>& urls, int& exitStatus) {
  _instance = std::make_unique<ApplicationInstance>();
  switch (_instance->claim(urls)) {
    case ApplicationInstance::Role::first:
      break;
    case ApplicationInstance::Role::handedOver:
      exitStatus = EXIT_SUCCESS;
      return false;
    case ApplicationInstance::Role::refused:
      std::cerr << "Tidemar is running already and can't be reached.\n";
      exitStatus = EXIT_FAILURE;
      return false;
  }
  finishLaunching();
  for (const std::string& url : urls)
    _appModel->open(url);
  return true;
}

void AppDelegate::finishLaunching() {
  _appModel = std::make_unique<AppModel>(Services{.fileManager = _platform->fileManager,
                                                  .notifications = _platform->notifications,
                                                  .loginItem = _platform->loginItem,
                                                  .finderExtension = _platform->finderExtension,
                                                  .alerts = _platform->alerts,
                                                  .standardDefaults = _platform->standardDefaults,
                                                  .sharedDefaults = _platform->sharedDefaults,
                                                  .currentDate = currentDate,
                                                  .currentCalendar = [] { return Calendar(currentTimeZoneIdentifier()); }});
  AppModel* model = _appModel.get();
  connect(_instance.get(), &ApplicationInstance::opened, model,
          [model](const std::string& url) { model->open(url); });
  connect(_instance.get(), &ApplicationInstance::actionActivated, model,
          [model](const std::string& name, const QVariantList& parameters) {
            if (name == "put-back") model->putBack(integers(parameters));
          });
  connect(&_platform->wakeNotifier, &WakeNotifier::didWake, model,
          [model] { model->runBackgroundCycle(); });
  connect(qApp, &QGuiApplication::focusWindowChanged, model, [model](QWindow* window) {
    if (window != nullptr) model->refreshSystemState();
  });
  _platform->finderExtension.onChange = [model] { model->refreshSystemState(); };
  connect(qApp, &QCoreApplication::aboutToQuit, model, &AppModel::stopClearing);
  model->startSchedule();
}

}  // namespace tidemar
