#pragma once

#include <QAction>
#include <QPointer>
#include <QWidget>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "Tidemar/MainWindowState.h"
#include "Tidemar/ScreenContext.h"

namespace tidemar {

class MainView;

/// Makes and tracks the windows, at most one of a kind. With none open Tidemar goes on in the
/// background. Main thread.
class WindowCoordinator : public QObject {
  Q_OBJECT
 public:
  explicit WindowCoordinator(ScreenContext context);
  ~WindowCoordinator() override;

  /// Brings up the main window, on that folder if one is given and known.
  void showMain(const std::optional<FileURL>& folderURL = std::nullopt,
                MainWindowState::Cause cause = MainWindowState::Cause::user);
  void showSettings();
  void showSetup();

  /// Brings up the window with that identifier and makes it if there is none.
  void openWindow(const std::string& identifier, const std::function<QWidget*()>& makeWindow);

  /// The open window with that identifier, or null.
  QWidget* window(const std::string& identifier) const;

  MainWindowState& mainWindowState() noexcept { return _mainWindowState; }
  const ScreenContext& context() const noexcept { return _context; }

  /// Takes the windows off the screen for the end of the application, after what is being edited in
  /// them was handed out, and remembers where the main window stood.
  void hideAll();

 signals:
  void showInMenuBarChanged();

  /// The user has closed the last window; Tidemar goes on without one.
  void lastWindowClosed();

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  QWidget* makeMainWindow();
  QWidget* makeFittingWindow(std::string_view title, QWidget* content);
  void forget(QWidget& window);
  void finishEdits();
  void storeFrames();

  ScreenContext _context;
  MainWindowState _mainWindowState;
  QAction _checkForUpdates;
  QAction _openSettings;
  QAction _quit;
  std::map<std::string, QWidget*> _windows;
  QPointer<MainView> _mainView;
};

}  // namespace tidemar
