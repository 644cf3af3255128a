#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>

namespace tidemar {

/// Tells when there is a place for a tray icon: a StatusNotifierWatcher with a host on the session
/// bus, or on X11 a tray of the XEmbed protocol. The toolkit decides between the two at the first
/// use of a tray icon and stays with it, so none may be made before. Main thread.
class TrayHost : public QObject, private QAbstractNativeEventFilter {
  Q_OBJECT
 public:
  explicit TrayHost(QObject* parent = nullptr);
  ~TrayHost() override;

  /// Stays true once there was one.
  bool isAvailable() const noexcept { return _isAvailable; }

 signals:
  void becameAvailable();

 private slots:
  void askForNotifierHost();

 private:
  bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;
  void becomeAvailable();

  bool _isAvailable = false;
};

}  // namespace tidemar
