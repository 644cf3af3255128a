#include "Platform/Desktop/PanelGround.h"

#include <QApplication>
#include <QEvent>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <QWidget>
#include <chrono>

namespace tidemar {
namespace {

/// A panel draws its ground under an icon after it gave it a place.
constexpr std::chrono::milliseconds timeToDraw{300};

/// The toolkit's own window for an embedded icon.
QWidget* embeddedWindow() {
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (window->inherits("QSystemTrayIconSys")) return window;
  }
  return nullptr;
}

}  // namespace

PanelGround::PanelGround(const QSystemTrayIcon& icon) : _icon(icon) {
  QWidget* window = embeddedWindow();
  _isEmbedded = window != nullptr;
  if (!_isEmbedded) return;
  _pause.setSingleShot(true);
  _pause.setInterval(timeToDraw);
  connect(&_pause, &QTimer::timeout, this, &PanelGround::look);
  window->installEventFilter(this);
  _pause.start();
}

bool PanelGround::eventFilter(QObject* object, QEvent* event) {
  switch (event->type()) {
    case QEvent::Show:
    case QEvent::Move:
    case QEvent::Resize:
    // No event tells that a panel has other colours; under the pointer the icon is looked at.
    case QEvent::Enter:
      _pause.start();
      break;
    default:
      break;
  }
  return QObject::eventFilter(object, event);
}

void PanelGround::look() {
  const QRect frame = _icon.geometry();
  QScreen* screen = QGuiApplication::screenAt(frame.center());
  if (screen == nullptr || frame.isEmpty()) return;
  const QPoint corner = frame.topLeft() - screen->geometry().topLeft();
  const QPixmap picture =
      screen->grabWindow(0, corner.x(), corner.y(), frame.width(), frame.height());
  const std::optional<bool> isDark = isGroundDark(picture.toImage());
  if (!isDark || isDark == _isDark) return;
  _isDark = isDark;
  emit told(*isDark);
}

std::optional<bool> isGroundDark(const QImage& picture) {
  if (picture.isNull()) return std::nullopt;
  constexpr qint64 middle = 128;
  qint64 sum = 0;
  for (int x = 0; x < picture.width(); ++x)
    sum += qGray(picture.pixel(x, 0)) + qGray(picture.pixel(x, picture.height() - 1));
  return sum < middle * 2 * picture.width();
}

}  // namespace tidemar
