#pragma once

#include <QWidget>

#include "Tidemar/ModelObserver.h"
#include "Tidemar/ScreenContext.h"
#include "TidemarUI/Views/SettingsView.h"
#include "TidemarUI/Views/SetupView.h"

namespace tidemar {

/// The settings window's content over the model. Main thread.
class SettingsContainerView : public SettingsView {
 public:
  /// `onChangeShowInMenuBar` is told after the switch was stored.
  SettingsContainerView(const ScreenContext& context, std::function<void()> openSetup,
                        std::function<void()> onChangeShowInMenuBar);

 private:
  void refresh();

  const ScreenContext& _context;
  ModelObserver _observer;
};

/// The setup window's content over the model. Main thread.
class SetupContainerView : public SetupView {
 public:
  explicit SetupContainerView(const ScreenContext& context);

 private:
  void refresh();
  QCoro::Task<void> requestNotifications();

  const ScreenContext& _context;
  bool _wereNotificationsRefused = false;
  ModelObserver _observer;
};

}  // namespace tidemar
