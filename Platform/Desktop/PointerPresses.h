#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>

namespace tidemar {

/// Tells of pointer buttons that are pressed anywhere on an X11 display, also where no window takes
/// the focus, as on a panel. It takes the press from nobody. On other displays nothing is told.
/// Main thread.
class PointerPresses : public QObject, private QAbstractNativeEventFilter {
  Q_OBJECT
 public:
  explicit PointerPresses(QObject* parent = nullptr);
  ~PointerPresses() override;

  /// The display tells of presses only while this is on; at first it is off.
  void follow(bool isOn);

 signals:
  void pressed();

 private:
  bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

  bool _isOn = false;
};

}  // namespace tidemar
