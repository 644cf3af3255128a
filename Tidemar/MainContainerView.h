#pragma once

#include <QFileDialog>
#include <QPointer>
#include <QWidget>

#include "Tidemar/MainWindowState.h"
#include "Tidemar/ModelObserver.h"
#include "Tidemar/ScreenContext.h"
#include "Tidemar/StateMaker.h"
#include "TidemarUI/State/MainState.h"

namespace tidemar {

class MainView;

/// The main window's content over the model. Leaving a folder's page starts a cycle, so that a
/// change of its rules takes effect. Folders that are dropped on it are added. Main thread.
class MainContainerView : public QWidget {
  Q_OBJECT
 public:
  MainContainerView(const ScreenContext& context, MainWindowState& windowState);

  MainView& view() noexcept { return *_view; }

  /// Makes a folder known and selects it.
  QCoro::Task<void> addFolder(FileURL url);

 private:
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void connectClosures();
  void refresh();
  void chooseFolder();
  void removeFolder(std::int64_t id);
  void selectionChanged(const MainWindowState::Selection& before, MainWindowState::Cause cause);

  const ScreenContext& _context;
  MainWindowState& _windowState;
  MainView* _view;
  StateMaker<MainState> _states;
  QPointer<QFileDialog> _panel;  ///< Goes with the window at the latest.
  ModelObserver _observer;
};

}  // namespace tidemar
