#include "Tidemar/AppDelegate.h"

#include <QApplication>
#include <QDBusConnection>
#include <QEvent>
#include <QWindow>
#include <chrono>
#include <cstdlib>
#include <iostream>

#include "Platform/Desktop/AutostartLoginItem.h"
#include "Platform/Desktop/DefaultFileManager.h"
#include "Platform/Desktop/DesktopColorScheme.h"
#include "Platform/Desktop/DesktopNotificationCenter.h"
#include "Platform/Desktop/FileManagerExtension.h"
#include "Platform/Desktop/FileViewer.h"
#include "Platform/Desktop/LoginItemsSettings.h"
#include "Platform/Desktop/ModalAlerts.h"
#include "Platform/Desktop/PackageOwnership.h"
#include "Platform/Desktop/PackageUpdates.h"
#include "Platform/Desktop/PlasmaColors.h"
#include "Platform/Desktop/SleepClocks.h"
#include "Platform/Desktop/WakeNotifier.h"
#include "Platform/Files/DiskFileManager.h"
#include "Platform/PlatformError.h"
#include "Platform/UserDefaults.h"
#include "Tidemar/MenuBarExtra.h"
#include "Tidemar/Model/AppModel.h"
#include "Tidemar/Model/DataDirectory.h"
#include "Tidemar/Model/FatalFailure.h"
#include "Tidemar/Model/WaitingPool.h"
#include "Tidemar/Updates.h"
#include "Tidemar/WindowCoordinator.h"
#include "Tidemar/WindowFrame.h"
#include "TidemarUI/State/FailureLine.h"
#include "TidemarUI/State/Labels.h"
#include "TidemarUI/State/TomorrowNotification.h"
#include "TidemarUI/Views/AccessibleRoles.h"
#include "TidemarUI/Views/Icons.h"
#include "TidemarUI/Views/QuietStyle.h"
#include "TidemarUI/Views/TextLabel.h"

namespace tidemar {
namespace {

Date currentDate() {
  const std::chrono::duration<double> sinceEpoch =
      std::chrono::system_clock::now().time_since_epoch();
  return {sinceEpoch.count()};
}

double secondsSinceBoot() {
  return std::chrono::duration<double>(SleepClocks::sinceBoot()).count();
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

/// When the display server goes, the toolkit calls exit() wherever the main thread stands; a run on
/// another thread must not be cut off in the middle of an item by that either.
AppModel* modelAtExit = nullptr;

void stopClearingAtExit() {
  if (modelAtExit != nullptr) modelAtExit->stopClearing();
}

ExtensionTexts extensionTexts() {
  return {.title = std::string(labels::extensionTitle),
          .explanation = std::string(labels::extensionExplanation),
          .hint = std::string(labels::extensionHint),
          .noFileManager = std::string(labels::noFileManager),
          .note = std::string(labels::whatPCManFMNeeds),
          .failed = [](const std::string& fileManager, bool isOn) {
            return failureTitle(switchingExtension(fileManager, isOn));
          }};
}

UpdateTexts updateTexts() {
  return {.failed = failureTitle(checkingForUpdates()),
          .isUpToDate = std::string(labels::isUpToDate),
          .newVersion = std::string(labels::newVersion),
          .newVersionHint = std::string(labels::newVersionHint)};
}

ColorScheme schemeFor(DesktopColorScheme::Preference preference) {
  switch (preference) {
    case DesktopColorScheme::Preference::dark:
      return ColorScheme::dark;
    case DesktopColorScheme::Preference::light:
      return ColorScheme::light;
    case DesktopColorScheme::Preference::none:
      break;
  }
  return ColorScheme::asGiven;
}

SystemNames systemNames() {
  const std::string fileManager = DefaultFileManager::name();
  return {.fileManager = fileManager.empty() ? "Files" : fileManager, .computer = "computer"};
}

}  // namespace

/// The real platform, in the order in which the model needs it.
struct PlatformServices {
  WaitingPool executor;
  DiskFileManager fileManager;
  DesktopNotificationCenter notifications{QDBusConnection::sessionBus(),
                                          textOf(labels::openTidemar)};
  AutostartLoginItem loginItem{currentProgram()};
  ModalAlerts alerts;
  FileManagerExtension finderExtension{extensionTexts(), alerts};
  UserDefaults standardDefaults = UserDefaults::standard();
  UserDefaults sharedDefaults = UserDefaults::shared();
  WakeNotifier wakeNotifier{QDBusConnection::systemBus()};
  DesktopColorScheme colorScheme{QDBusConnection::sessionBus()};
  PackageUpdates updateService{QDBusConnection::systemBus(), packageOfProgram(currentProgram()),
                               updateTexts(), alerts};
};

AppDelegate::AppDelegate() : _platform(std::make_unique<PlatformServices>()) {}

AppDelegate::~AppDelegate() {
  modelAtExit = nullptr;
}

ApplicationInstance::Role AppDelegate::claimInstance(const CommandLine& commandLine,
                                                     const ActivationToken& token) {
  using Launch = ApplicationInstance::Launch;
  const Launch launch = commandLine.isByDesktop ? Launch::byDesktop : Launch::byUser;
  try {
    _instance = std::make_unique<ApplicationInstance>(makeDataDirectory());
    return _instance->claim(
        {.launch = launch, .url = commandLine.url, .action = commandLine.action}, token);
  } catch (const PlatformError& error) {
    endWithFatalFailure(_platform->alerts, error);
  }
}

bool AppDelegate::start(const CommandLine& commandLine, const ActivationToken& token,
                        int& exitStatus) {
  switch (claimInstance(commandLine, token)) {
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
  makeScreens();
  if (!commandLine.action.empty()) {
    perform(commandLine.action, {});
  } else if (!commandLine.isByDesktop) {
    _windows->showMain();
  }
  if (commandLine.url) open(*commandLine.url);
  return true;
}

void AppDelegate::finishLaunching() {
  _appModel = std::make_unique<AppModel>(
      Services{.executor = _platform->executor,
               .fileManager = _platform->fileManager,
               .notifications = _platform->notifications,
               .loginItem = _platform->loginItem,
               .finderExtension = _platform->finderExtension,
               .alerts = _platform->alerts,
               .standardDefaults = _platform->standardDefaults,
               .sharedDefaults = _platform->sharedDefaults,
               .currentDate = currentDate,
               .secondsSinceBoot = secondsSinceBoot,
               .currentCalendar = [] { return Calendar(currentTimeZoneIdentifier()); }});
  AppModel* model = _appModel.get();
  modelAtExit = model;
  std::atexit(stopClearingAtExit);
  connect(&_platform->wakeNotifier, &WakeNotifier::didWake, model,
          [model] { model->runBackgroundCycle(); });
  connect(qApp, &QGuiApplication::focusWindowChanged, model, [model](QWindow* window) {
    if (window != nullptr) model->refreshSystemState();
  });
  connect(&_platform->notifications, &DesktopNotificationCenter::serverCame, model,
          [model] { model->resumeNotifications(); });
  _platform->finderExtension.onChange = [model] { model->refreshSystemState(); };
  connect(qApp, &QCoreApplication::aboutToQuit, model, &AppModel::stopClearing);
  model->startSchedule();
}

void AppDelegate::makeScreens() {
  adoptQuietStyle();
  installAccessibleRoles();
  connect(&_platform->colorScheme, &DesktopColorScheme::told, this,
          [](DesktopColorScheme::Preference preference) {
            const auto colors = PlasmaColors::palette();
            const QPalette before = QGuiApplication::palette();
            // Colours that the user chose one by one say more than that they be dark.
            adoptColorScheme(colors ? ColorScheme::asGiven : schemeFor(preference), colors);
            if (QGuiApplication::palette() != before) WindowFrame::remakeDrawn();
          });
  qApp->installEventFilter(this);
  _updates = std::make_unique<Updates>(_platform->updateService);
  _windows = std::make_unique<WindowCoordinator>(ScreenContext{
      .model = *_appModel,
      .updates = *_updates,
      .defaults = _platform->standardDefaults,
      .currentDate = currentDate,
      .currentFormats = currentFormats,
      .showInFileManager = FileViewer::show,
      .showExtensionManagement = [this] { _platform->finderExtension.showManagementInterface(); },
      .openLoginItemsSettings = LoginItemsSettings::open,
      .quit = [this] { quit(); },
      .names = systemNames()});
  _menuBarExtra = std::make_unique<MenuBarExtra>(*_windows);
  connect(_windows.get(), &WindowCoordinator::lastWindowClosed, this, [this] {
    if (!_isQuitting && !_menuBarExtra->isShown()) _appModel->tellThatItGoesOn();
  });
  connect(&_platform->notifications, &DesktopNotificationCenter::clicked, _windows.get(),
          [this](const std::string& identifier) { showSubject(identifier); });
  connect(_instance.get(), &ApplicationInstance::activated, _windows.get(),
          [this] { _windows->showMain(); });
  connect(_instance.get(), &ApplicationInstance::opened, _windows.get(),
          [this](const std::string& url) { open(url); });
  connect(_instance.get(), &ApplicationInstance::actionActivated, _windows.get(),
          [this](const std::string& action, const QVariantList& parameters) {
            perform(action, parameters);
          });
}

/// Opens the main window at the folder that a notification is about.
void AppDelegate::showSubject(const std::string& notification) {
  const auto id = folderOfNotification(notification);
  const FolderReport* report = id ? _appModel->reportForFolder(*id) : nullptr;
  _windows->showMain(report != nullptr ? std::optional(FileURL(report->folder.path))
                                       : std::nullopt);
}

/// Gives the windows their icon and their colours when the first of them comes: for the one all
/// icon themes are read, for the other a service may be started, and a start at login shows no
/// window.
bool AppDelegate::eventFilter(QObject* object, QEvent* event) {
  if (event->type() == QEvent::Show && object->isWidgetType()) {
    const auto* widget = static_cast<QWidget*>(object);
    // The icon in a tray is a window for itself, too.
    if (widget->isWindow() && !widget->windowFlags().testFlag(Qt::BypassWindowManagerHint)) {
      qApp->removeEventFilter(this);
      QApplication::setWindowIcon(icons::application());
      _platform->colorScheme.follow();
    }
  }
  return QObject::eventFilter(object, event);
}

void AppDelegate::perform(const std::string& action, const QVariantList& parameters) {
  if (action == "put-back") _appModel->putBack(integers(parameters));
  if (action == "settings") _windows->showSettings();
  if (action == "setup") _windows->showSetup();
}

QCoro::Task<void> AppDelegate::quit() {
  if (_isQuitting) co_return;
  _isQuitting = true;
  if (_windows) _windows->hideAll();
  if (_appModel) co_await _appModel->finishCommands();
  QCoreApplication::quit();
}

QCoro::Task<void> AppDelegate::open(std::string url) {
  if (const std::optional<FileURL> folder = co_await _appModel->followLink(std::move(url)))
    _windows->showMain(folder, MainWindowState::Cause::link);
}

}  // namespace tidemar
