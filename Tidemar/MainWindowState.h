#pragma once

#include <QObject>
#include <cstdint>
#include <optional>

#include "TidemarUI/State/MainState.h"

namespace tidemar {

/// What the main window shows. It outlives the window, so that one that is opened again shows what
/// it showed. Main thread.
class MainWindowState : public QObject {
  Q_OBJECT
 public:
  using Selection = std::optional<MainSelection>;

  /// Who selects: the user, who leaves a page by it, or a link, which may be one of several that
  /// were opened at once.
  enum class Cause : std::uint8_t { user, link };

  const Selection& selection() const noexcept { return _selection; }

  /// Tells the observers if it is another one.
  void select(const Selection& selection, Cause cause = Cause::user) {
    if (selection == _selection) return;
    const Selection before = _selection;
    _selection = selection;
    emit selectionChanged(before, cause);
  }

 signals:
  void selectionChanged(const std::optional<tidemar::MainSelection>& before,
                        tidemar::MainWindowState::Cause cause);

 private:
  Selection _selection = MainSelection::overview();
};

}  // namespace tidemar
