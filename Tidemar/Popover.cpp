#include "Tidemar/Popover.h"

#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QShortcut>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "Platform/Desktop/TaskBar.h"
#include "Tidemar/WindowCoordinator.h"
#include "TidemarUI/State/Labels.h"
#include "TidemarUI/State/SystemBin.h"
#include "TidemarUI/Views/MenuBarView.h"
#include "TidemarUI/Views/Style.h"
#include "TidemarUI/Views/TextLabel.h"

namespace tidemar {
namespace {

/// A click on the icon takes the focus away from the popover before it is told as a click. What
/// closed less than this many milliseconds ago was closed by that click.
constexpr qint64 sameClick = 300;

constexpr int screenMargin = 2 * style::grid;

}  // namespace

QRect popoverFrame(const QRect& icon, const QSize& size, const QRect& available) {
  const QRect room = available.adjusted(screenMargin, screenMargin, -screenMargin, -screenMargin);
  QRect frame({}, size.boundedTo(room.size()));
  const int x = icon.center().x() - frame.width() / 2;
  // A panel at the top has the popover under it, one at the bottom over it.
  const bool isInUpperHalf = icon.center().y() < available.center().y();
  const int y =
      isInUpperHalf ? icon.bottom() + 1 + style::grid : icon.top() - style::grid - frame.height();
  frame.moveTo(std::clamp(x, room.left(), room.right() + 1 - frame.width()),
               std::clamp(y, room.top(), room.bottom() + 1 - frame.height()));
  return frame;
}

bool Popover::canBePlaced() {
  return !QGuiApplication::platformName().startsWith(QStringLiteral("wayland"));
}

Popover::Popover(WindowCoordinator& windows)
    : QWidget(nullptr, canBePlaced() ? Qt::Tool | Qt::FramelessWindowHint : Qt::Window),
      _windows(windows),
      _view(new MenuBarView(windows.context().names)),
      _states(windows.context().model.executor(),
              [this](auto state) { present(std::move(state)); }),
      _observer(windows.context().model, [this] { refresh(); }) {
  setWindowTitle(textOf(labels::tidemar));
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(1, 1, 1, 1);
  column->addWidget(_view);
  auto* quit = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q), this);
  connect(quit, &QShortcut::activated, this, [this] { _view->onQuit(); });
  connect(&_presses, &PointerPresses::pressed, this, [this] { closeBy(QCursor::pos()); });
  connectClosures();
}

void Popover::connectClosures() {
  const ScreenContext& context = _windows.context();
  _view->onTurnOnFinderExtension = [this, &context] {
    hide();
    context.showExtensionManagement();
  };
  _view->onSelectFolder = [this](const FolderSummary& summary) {
    const FileURL url(summary.path);
    hide();
    _windows.showMain(url);
  };
  _view->onUndo = [&context](const RecentRun& run) { context.model.putBack(run.journalEntryIDs); };
  _view->onShowInFinder = context.showInFileManager;
  _view->onOpen = [this] {
    hide();
    _windows.showMain();
  };
  _view->onQuit = [&context] { context.quit(); };
}

void Popover::toggle(const QRect& icon) {
  if (isVisible()) {
    hide();
    return;
  }
  if (_sinceFocusLoss.isValid() && _sinceFocusLoss.elapsed() < sameClick) return;
  _icon = icon.isEmpty() ? QRect(QCursor::pos(), QSize(1, 1)) : icon;
  _isOpening = !_isOpening;
  refresh();
}

void Popover::refresh() {
  // What nobody sees is built once it is shown.
  if (!isVisible() && !_isOpening) return;
  const ScreenContext& context = _windows.context();
  _states.ask([snapshot = context.model.snapshot(),
               isExtensionOff = context.model.isFinderExtensionOff(), now = context.currentDate(),
               formats = context.currentFormats(), bin = SystemBin::name()] {
    return menuBarState(snapshot->reports, snapshot->journal, snapshot->freeSpace, isExtensionOff,
                        now, formats, bin);
  });
}

void Popover::present(std::shared_ptr<const MenuBarState> state) {
  const bool isOpening = std::exchange(_isOpening, false);
  if (isOpening) {
    if (canBePlaced()) TaskBar::leaveOut(*this);
    show();
  }
  if (state) _view->setState(std::move(state));
  place();
  if (isOpening) {
    raise();
    activateWindow();
    _view->setFocus();
    _presses.follow(true);
  }
}

void Popover::place() {
  const QScreen* screen = QGuiApplication::screenAt(_icon.center());
  if (screen == nullptr) screen = QGuiApplication::primaryScreen();
  if (screen == nullptr) return;
  const QSize size = _view->sizeHint() + QSize(2, 2);
  const QRect frame = popoverFrame(_icon, size, screen->availableGeometry());
  if (canBePlaced()) {
    setFixedSize(frame.size());
    move(frame.topLeft());
  } else {
    resize(frame.size());
  }
}

bool Popover::event(QEvent* event) {
  if (event->type() == QEvent::WindowDeactivate && isVisible()) {
    hide();
    _sinceFocusLoss.start();
  }
  return QWidget::event(event);
}

void Popover::closeBy(const QPoint& press) {
  // A press on the icon is a click to come, which closes it then.
  if (!isVisible() || frameGeometry().contains(press) || _icon.contains(press)) return;
  hide();
  _sinceFocusLoss.start();
}

void Popover::hideEvent(QHideEvent* event) {
  QWidget::hideEvent(event);
  _presses.follow(false);
}

void Popover::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape) {
    hide();
    return;
  }
  QWidget::keyPressEvent(event);
}

void Popover::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setPen(style::mixed(style::windowFill(palette()), style::text(palette()), 0.25));
  painter.setBrush(style::windowFill(palette()));
  painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

}  // namespace tidemar
