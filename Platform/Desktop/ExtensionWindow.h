#pragma once

#include <QDialog>
#include <functional>
#include <string>
#include <vector>

#include "Platform/Extension/MenuEntry.h"

namespace tidemar {

/// The words of the management window.
struct ExtensionTexts {
  std::string title;
  std::string explanation;    ///< Over the file managers.
  std::string hint;           ///< Under them.
  std::string noFileManager;  ///< In their place where there is none.
  std::string note = {};      ///< Last, about what can't be extended; or empty.

  /// The title of the alert when a file manager couldn't be switched.
  std::function<std::string(const std::string& fileManager, bool isOn)> failed;
};

/// The management window of the file-manager extension: one check box a file manager, which shows
/// what is on the disk whenever the window gets the focus. A change applies at once. Main thread.
class ExtensionWindow : public QDialog {
  Q_OBJECT
 public:
  using Switch = std::function<void(MenuEntry& entry, bool isOn)>;

  /// The entries outlive the window. After `onSwitch` the box shows what came of it.
  ExtensionWindow(const std::vector<MenuEntry*>& entries, const ExtensionTexts& texts,
                  const Switch& onSwitch);

 protected:
  bool event(QEvent* event) override;

 private:
  class Box;
  std::vector<Box*> _boxes;
};

}  // namespace tidemar
