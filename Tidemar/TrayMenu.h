#pragma once

#include <QMenu>
#include <cstdint>
#include <vector>

namespace tidemar {

class WindowCoordinator;

/// The menu of the icon beside the clock. Some desktops open nothing else, so it says what goes and
/// puts the latest run back as well. Main thread.
class TrayMenu : public QMenu {
 public:
  explicit TrayMenu(WindowCoordinator& windows);

 private:
  void refresh();

  WindowCoordinator& _windows;
  QAction* _headline;
  QAction* _putBack;
  std::vector<std::int64_t> _putBackIDs;
};

}  // namespace tidemar
