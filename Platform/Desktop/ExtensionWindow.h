#pragma once

#include <QDialog>
#include <functional>
#include <vector>

#include "Platform/Extension/MenuEntry.h"

namespace tidemar {

/// The management window of the file-manager extension: one check box a file manager, which shows
/// what is on the disk whenever the window gets the focus. A change applies at once. Main thread.
class ExtensionWindow : public QDialog {
  Q_OBJECT
 public:
  using Switch = std::function<void(MenuEntry& entry, bool isOn)>;

  /// The entries outlive the window. After `onSwitch` the box shows what came of it.
  ExtensionWindow(const std::vector<MenuEntry*>& entries, Switch onSwitch);

 protected:
  bool event(QEvent* event) override;

 private:
  class Box;
  std::vector<Box*> _boxes;
};

}  // namespace tidemar
