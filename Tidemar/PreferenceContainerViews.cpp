#include "Tidemar/PreferenceContainerViews.h"

#include <QPointer>
#include <utility>

#include "Platform/PlatformError.h"
#include "Tidemar/Model/ApplicationLog.h"

namespace tidemar {

SettingsContainerView::SettingsContainerView(const ScreenContext& context,
                                             std::function<void()> openSetup,
                                             std::function<void()> onChangeShowInMenuBar)
    : SettingsView(context.names),
      _context(context),
      _observer(context.model, [this] { refresh(); }) {
  onToggleOpenAtLogin = [this](bool isOn) {
    // The window may be closed while an alert tells of a failure.
    const QPointer<QWidget> guard(this);
    _context.model.setOpensAtLogin(isOn);
    if (guard) refresh();
  };
  onToggleShowInMenuBar = [this, changed = std::move(onChangeShowInMenuBar)](bool isOn) {
    try {
      _context.defaults.setBoolean(showInMenuBarKey, isOn);
    } catch (const std::exception& error) {
      // The switch stays where it was, which tells the user as much.
      applicationLog().log(LogLevel::error, "Couldn't store a setting: %{public}s",
                           textWithoutPath(error));
    }
    refresh();
    changed();
  };
  onOpenLoginItemsSettings = context.openLoginItemsSettings;
  onOpenSetup = std::move(openSetup);
  refresh();
}

void SettingsContainerView::refresh() {
  const AppModel& model = _context.model;
  setState({.openAtLogin = model.isLoginItemEnabled(),
            .openAtLoginRequiresApproval = model.loginItemNeedsApproval(),
            .showInMenuBar = _context.defaults.boolean(showInMenuBarKey).value_or(true)});
}

SetupContainerView::SetupContainerView(const ScreenContext& context)
    : SetupView(context.names), _context(context), _observer(context.model, [this] { refresh(); }) {
  onOpenExtensionManagement = context.showExtensionManagement;
  onToggleOpenAtLogin = [this](bool isOn) { _context.model.setOpensAtLogin(isOn); };
  onOpenLoginItemsSettings = context.openLoginItemsSettings;
  onRequestNotifications = [this] { requestNotifications(); };
  refresh();
}

void SetupContainerView::refresh() {
  const AppModel& model = _context.model;
  setState({.isExtensionEnabled = !model.isFinderExtensionOff(),
            .isOpenAtLogin = model.isLoginItemEnabled(),
            .isOpenAtLoginRequiresApproval = model.loginItemNeedsApproval(),
            .isNotificationsEnabled = model.isNotificationAuthorized(),
            .wereNotificationsRefused = _wereNotificationsRefused});
}

QCoro::Task<void> SetupContainerView::requestNotifications() {
  // The window may be closed before the answer; the model outlives it.
  const QPointer<QWidget> guard(this);
  AppModel& model = _context.model;
  co_await model.requestNotificationPermission();
  if (!guard) co_return;
  _wereNotificationsRefused = !model.isNotificationAuthorized();
  refresh();
}

}  // namespace tidemar
