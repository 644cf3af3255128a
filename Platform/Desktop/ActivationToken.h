#pragma once

#include <QString>
#include <QVariantMap>

class QWidget;

namespace tidemar {

/// What a launcher gives with a request, so that the window that answers it may come forward: the
/// token of the Wayland protocol xdg-activation, and the ID of the freedesktop Startup Notification
/// protocol, which X11 desktops use. Either is empty where there is none.
struct ActivationToken {
  QString token;
  QString startupID;

  /// The one that this process was started with. Call before the toolkit starts, which takes it.
  static ActivationToken fromEnvironment();

  /// As the methods of org.freedesktop.Application carry it.
  static ActivationToken fromPlatformData(const QVariantMap& data);
  QVariantMap platformData() const;
};

/// What to hand to another program with a request that the user has just made here, so that its
/// window may come before ours: a startup ID with the time of that. Empty where there is none, as
/// on Wayland, whose tokens the toolkit doesn't give out. Main thread.
QString startupIDForRequest();

/// Takes the token of a request that another process handed over: tells an X11 desktop that the
/// start is over, and keeps the token for the next `bringForward`. Main thread.
void accept(const ActivationToken& token);

/// Shows a window above the others and with the focus, as far as the desktop lets it; uses the
/// token that was accepted last up. Main thread.
void bringForward(QWidget& window);

}  // namespace tidemar
