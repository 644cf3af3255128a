#pragma once

#include <QCoroTask>
#include <QObject>
#include <memory>

#include "Platform/Desktop/ActivationToken.h"
#include "Platform/Desktop/ApplicationInstance.h"
#include "Tidemar/CommandLine.h"

namespace tidemar {

class AppModel;
class MenuBarExtra;
class Updates;
class WindowCoordinator;
struct PlatformServices;

/// Starts the application, owns its one model and hands it what comes in from the desktop. Main
/// thread.
class AppDelegate : public QObject {
  Q_OBJECT
 public:
  AppDelegate();
  ~AppDelegate() override;

  /// Becomes the application, or hands the URL to the one that runs already. Answers false where
  /// this process has nothing more to do, with its exit status.
  bool start(const CommandLine& commandLine, const ActivationToken& token, int& exitStatus);

  /// Ends the application: what is being edited is finished and what was commanded is carried out
  /// first, though not for long. Further calls do nothing.
  QCoro::Task<void> quit();

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  ApplicationInstance::Role claimInstance(const CommandLine& commandLine,
                                          const ActivationToken& token);
  void finishLaunching();
  void makeScreens();
  QCoro::Task<void> open(std::string url);
  void showSubject(const std::string& notification);
  void perform(const std::string& action, const QVariantList& parameters);

  bool _isQuitting = false;
  std::unique_ptr<PlatformServices> _platform;
  std::unique_ptr<ApplicationInstance> _instance;
  std::unique_ptr<AppModel> _appModel;
  std::unique_ptr<Updates> _updates;
  std::unique_ptr<WindowCoordinator> _windows;
  std::unique_ptr<MenuBarExtra> _menuBarExtra;
};

}  // namespace tidemar
