#include "Tidemar/WindowFrame.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <array>
#include <optional>
#include <sstream>

#include "Platform/PlatformError.h"
#include "Tidemar/Model/ApplicationLog.h"

namespace tidemar::WindowFrame {
namespace {

std::string keyOf(const QWidget& window) {
  return "windowFrame." + window.objectName().toStdString();
}

std::optional<QRect> frameOf(const std::string& text) {
  std::istringstream stream(text);
  std::array<int, 4> numbers{};
  for (int& number : numbers) {
    if (!(stream >> number)) return std::nullopt;
  }
  return QRect(numbers[0], numbers[1], numbers[2], numbers[3]);
}

}  // namespace

bool restore(QWidget& window, const UserDefaults& defaults) {
  const std::optional<std::string> stored = defaults.string(keyOf(window));
  const std::optional<QRect> frame = stored ? frameOf(*stored) : std::nullopt;
  if (!frame || !frame->isValid()) return false;
  const QScreen* screen = QGuiApplication::screenAt(frame->center());
  if (screen == nullptr) return false;
  const QRect available = screen->availableGeometry();
  window.resize(frame->size().boundedTo(available.size()).expandedTo(window.minimumSize()));
  window.move(frame->topLeft());
  return true;
}

void store(const QWidget& window, UserDefaults& defaults) {
  // A maximised window comes back in the size it had before.
  const bool isOrdinary = !(window.windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen));
  const QSize size = isOrdinary ? window.size() : window.normalGeometry().size();
  const QPoint place = isOrdinary ? window.pos() : window.normalGeometry().topLeft();
  std::ostringstream text;
  text << place.x() << ' ' << place.y() << ' ' << size.width() << ' ' << size.height();
  try {
    defaults.setString(keyOf(window), text.str());
  } catch (const std::exception& error) {
    applicationLog().log(LogLevel::error, "Couldn't store a window's frame: %{public}s",
                         textWithoutPath(error));
  }
}

void center(QWidget& window) {
  const QScreen* screen = QGuiApplication::screenAt(QCursor::pos());
  if (screen == nullptr) screen = QGuiApplication::primaryScreen();
  if (screen == nullptr) return;
  QRect frame({}, window.size());
  frame.moveCenter(screen->availableGeometry().center());
  window.move(frame.topLeft());
}

}  // namespace tidemar::WindowFrame
