#pragma once

#include <QWidget>
#include <functional>

#include "TidemarUI/State/SettingsState.h"
#include "TidemarUI/State/SystemNames.h"
#include "TidemarUI/Views/Switch.h"

namespace tidemar {

/// The program's few preferences.
class SettingsView : public QWidget {
 public:
  explicit SettingsView(const SystemNames& names = {}, QWidget* parent = nullptr);

  std::function<void(bool isOn)> onToggleOpenAtLogin;
  std::function<void(bool isOn)> onToggleShowInMenuBar;
  std::function<void()> onOpenLoginItemsSettings;
  std::function<void()> onOpenSetup;

  void setState(const SettingsState& state);

 private:
  Switch* _openAtLogin;
  QWidget* _approval;
  Switch* _showInMenuBar;
};

}  // namespace tidemar
