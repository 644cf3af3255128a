#pragma once

#include <QObject>
#include <optional>

#include "TidemarUI/State/MainState.h"

namespace tidemar {

/// What the main window shows. It outlives the window, so that one that is opened again shows what
/// it showed. Main thread.
class MainWindowState : public QObject {
  Q_OBJECT
 public:
  using Selection = std::optional<MainSelection>;

  const Selection& selection() const noexcept { return _selection; }

  /// Tells the observers if it is another one.
  void select(const Selection& selection) {
    if (selection == _selection) return;
    const Selection before = _selection;
    _selection = selection;
    emit selectionChanged(before);
  }

 signals:
  void selectionChanged(const std::optional<tidemar::MainSelection>& before);

 private:
  Selection _selection = MainSelection::overview();
};

}  // namespace tidemar
