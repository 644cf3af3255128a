#pragma once

#include <QObject>
#include <memory>

#include "Tidemar/CommandLine.h"

namespace tidemar {

class ApplicationInstance;
class AppModel;
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
  bool start(const CommandLine& commandLine, int& exitStatus);

 private:
  void finishLaunching();

  std::unique_ptr<PlatformServices> _platform;
  std::unique_ptr<ApplicationInstance> _instance;
  std::unique_ptr<AppModel> _appModel;
};

}  // namespace tidemar
