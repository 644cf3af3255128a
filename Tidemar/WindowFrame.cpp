#include "Tidemar/WindowFrame.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QWindow>
#include <algorithm>
#include <optional>
#include <sstream>
#include <vector>

#include "Platform/PlatformError.h"
#include "Tidemar/Model/ApplicationLog.h"

namespace tidemar::WindowFrame {
namespace {

std::string keyOf(const QWidget& window) {
  return "windowFrame." + window.objectName().toStdString();
}

// Room for the decoration, which a window has only once it is shown.
constexpr int titleBar = 40;
constexpr int edges = 8;

/// What was stored; without a place where the display server tells none.
struct Frame {
  QSize size;
  std::optional<QPoint> place;
};

std::optional<Frame> frameOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<int> numbers;
  for (int number = 0; stream >> number;)
    numbers.push_back(number);
  if (numbers.size() != 2 && numbers.size() != 4) return std::nullopt;
  const bool hasPlace = numbers.size() == 4;
  Frame frame{.size = QSize(numbers[numbers.size() - 2], numbers.back()), .place = std::nullopt};
  if (hasPlace) frame.place = QPoint(numbers[0], numbers[1]);
  return frame.size.isValid() ? std::optional(frame) : std::nullopt;
}

bool hasPlaces() {
  return !QGuiApplication::platformName().startsWith(QStringLiteral("wayland"));
}

/// Puts a window there, or as near as it is whole, with its title bar and beside the panels.
void bringInto(const QScreen& screen, QWidget& window, const QRect& frame) {
  const QRect room = screen.availableGeometry().adjusted(0, 0, -edges, -titleBar);
  window.resize(frame.size().boundedTo(room.size()).expandedTo(window.minimumSize()));
  const QPoint last(room.right() + 1 - window.width(), room.bottom() + 1 - window.height());
  window.move(std::max(room.left(), std::min(frame.left(), last.x())),
              std::max(room.top(), std::min(frame.top(), last.y())));
}

}  // namespace

bool restore(QWidget& window, const UserDefaults& defaults) {
  const std::optional<std::string> stored = defaults.string(keyOf(window));
  const std::optional<Frame> frame = stored ? frameOf(*stored) : std::nullopt;
  if (!frame) return false;
  if (!frame->place) {
    window.resize(frame->size.expandedTo(window.minimumSize()));
    center(window);
    return true;
  }
  const QRect wanted(*frame->place, frame->size);
  const QScreen* screen = QGuiApplication::screenAt(wanted.center());
  if (screen == nullptr) screen = QGuiApplication::primaryScreen();
  if (screen != nullptr) bringInto(*screen, window, wanted);
  return screen != nullptr;
}

void store(const QWidget& window, UserDefaults& defaults) {
  // A maximised window comes back in the size it had before.
  const bool isOrdinary = !(window.windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen));
  const QSize size = isOrdinary ? window.size() : window.normalGeometry().size();
  const QPoint place = isOrdinary ? window.pos() : window.normalGeometry().topLeft();
  std::ostringstream text;
  if (hasPlaces()) text << place.x() << ' ' << place.y() << ' ';
  text << size.width() << ' ' << size.height();
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
  bringInto(*screen, window, frame);
}

void remakeDrawn() {
  if (hasPlaces()) return;
  for (QWindow* window : QGuiApplication::topLevelWindows()) {
    const Qt::WindowFlags flags = window->flags();
    const bool mayHaveFrame = (window->type() == Qt::Window || window->type() == Qt::Dialog) &&
                              !flags.testFlag(Qt::FramelessWindowHint);
    if (!mayHaveFrame || window->handle() == nullptr) continue;
    // A frame goes and comes with the flag, while the window stays where it is.
    window->setFlags(flags | Qt::FramelessWindowHint);
    window->setFlags(flags);
  }
}

}  // namespace tidemar::WindowFrame
