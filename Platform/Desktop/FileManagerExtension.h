#pragma once

#include <QPointer>
#include <functional>
#include <memory>
#include <vector>

#include "Platform/Desktop/Alerts.h"
#include "Platform/Desktop/ExtensionWindow.h"
#include "Platform/Desktop/FinderExtension.h"
#include "Platform/Extension/MenuEntry.h"

class QDialog;

namespace tidemar {

/// The command in the file managers of this machine, each of which the user switches on or off in
/// the management window. Main thread.
class FileManagerExtension : public FinderExtension {
 public:
  /// The file managers run the helper program that lies beside this program. `alerts` outlives the
  /// object.
  FileManagerExtension(ExtensionTexts texts, Alerts& alerts);
  FileManagerExtension(std::vector<std::unique_ptr<MenuEntry>> entries, ExtensionTexts texts,
                       Alerts& alerts);
  ~FileManagerExtension() override;

  bool isEnabled() const override;

  /// Shows the management window, or raises the one that is open.
  void showManagementInterface();

  /// Called after each change that the user made.
  std::function<void()> onChange;

 private:
  void switchEntry(MenuEntry& entry, bool isOn);

  std::vector<std::unique_ptr<MenuEntry>> _entries;
  ExtensionTexts _texts;
  Alerts& _alerts;
  QPointer<QDialog> _window;
};

}  // namespace tidemar
