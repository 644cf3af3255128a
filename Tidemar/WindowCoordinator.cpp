#include "Tidemar/WindowCoordinator.h"

#include <QCloseEvent>
#include <QDialog>
#include <QLayout>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "Platform/Desktop/ActivationToken.h"
#include "Tidemar/MainContainerView.h"
#include "Tidemar/PreferenceContainerViews.h"
#include "Tidemar/WindowFrame.h"
#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/Icons.h"
#include "TidemarUI/Views/MainView.h"
#include "TidemarUI/Views/Style.h"
#include "TidemarUI/Views/TextLabel.h"

namespace tidemar {
namespace {

constexpr QSize mainWindowSize(820, 560);
constexpr const char* mainIdentifier = "main";

QAction* makeSeparator(QObject* parent) {
  auto* separator = new QAction(parent);
  separator->setSeparator(true);
  return separator;
}

}  // namespace

WindowCoordinator::WindowCoordinator(ScreenContext context) : _context(std::move(context)) {
  _checkForUpdates.setText(textOf(labels::checkForUpdates));
  connect(&_checkForUpdates, &QAction::triggered, this,
          [this] { _context.updates.checkForUpdates(); });
  const auto followUpdates = [this] { _checkForUpdates.setEnabled(_context.updates.canCheck()); };
  connect(&_context.updates, &Updates::canCheckChanged, this, followUpdates);
  followUpdates();

  _openSettings.setText(textOf(labels::settings));
  _openSettings.setShortcut(Qt::CTRL | Qt::Key_Comma);
  connect(&_openSettings, &QAction::triggered, this, &WindowCoordinator::showSettings);
  _quit.setText(textOf(labels::quitTidemar));
  _quit.setShortcut(Qt::CTRL | Qt::Key_Q);
  connect(&_quit, &QAction::triggered, this, [this] { _context.quit(); });
}

WindowCoordinator::~WindowCoordinator() {
  finishEdits();
  for (const auto& [identifier, window] : _windows)
    delete window;
}

void WindowCoordinator::showMain(const std::optional<FileURL>& folderURL,
                                 MainWindowState::Cause cause) {
  if (folderURL) {
    const FolderReport* report = _context.model.reportForFolderAt(*folderURL);
    if (report != nullptr && report->folder.id)
      _mainWindowState.select(MainSelection::folder(*report->folder.id), cause);
  }
  openWindow(mainIdentifier, [this] { return makeMainWindow(); });
}

void WindowCoordinator::showSettings() {
  openWindow("settings", [this] {
    return makeFittingWindow(labels::settingsTitle, new SettingsContainerView(
                                                        _context, [this] { showSetup(); },
                                                        [this] { emit showInMenuBarChanged(); }));
  });
}

void WindowCoordinator::showSetup() {
  openWindow("setup", [this] {
    return makeFittingWindow(labels::setupWindowTitle, new SetupContainerView(_context));
  });
}

void WindowCoordinator::openWindow(const std::string& identifier,
                                   const std::function<QWidget*()>& makeWindow) {
  QWidget* window = this->window(identifier);
  if (window == nullptr) {
    window = makeWindow();
    window->installEventFilter(this);
    window->addActions({&_openSettings, &_quit});
    _windows[identifier] = window;
  }
  window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
  bringForward(*window);
}

QWidget* WindowCoordinator::window(const std::string& identifier) const {
  const auto found = _windows.find(identifier);
  return found == _windows.end() ? nullptr : found->second;
}

void WindowCoordinator::hideAll() {
  storeFrames();
  finishEdits();
  for (const auto& [identifier, window] : _windows) {
    for (QDialog* panel : window->findChildren<QDialog*>())
      panel->reject();
    window->hide();
  }
}

void WindowCoordinator::finishEdits() {
  if (_mainView) _mainView->finishEdits();
}

void WindowCoordinator::storeFrames() {
  if (const QWidget* main = window(mainIdentifier)) WindowFrame::store(*main, _context.defaults);
}

bool WindowCoordinator::eventFilter(QObject* object, QEvent* event) {
  if (event->type() == QEvent::Close) forget(static_cast<QWidget&>(*object));
  return QObject::eventFilter(object, event);
}

void WindowCoordinator::forget(QWidget& window) {
  const auto found =
      std::ranges::find(_windows, &window, [](const auto& entry) { return entry.second; });
  if (found == _windows.end()) return;
  if (found->first == mainIdentifier) storeFrames();
  _windows.erase(found);
  window.deleteLater();
  if (_windows.empty()) emit lastWindowClosed();
}

QWidget* WindowCoordinator::makeMainWindow() {
  auto* content = new MainContainerView(_context, _mainWindowState);
  auto* window = new QWidget;
  auto* column = new QVBoxLayout(window);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(content);
  _mainView = &content->view();
  _mainView->setMenuActions({&_checkForUpdates, &_openSettings, makeSeparator(window), &_quit});
  window->setObjectName(QStringLiteral("TidemarMain"));
  window->setWindowTitle(textOf(labels::tidemar));
  column->activate();  // so that the window knows its least size
  if (!WindowFrame::restore(*window, _context.defaults)) {
    window->resize(style::scaled(mainWindowSize.width()), style::scaled(mainWindowSize.height()));
    WindowFrame::center(*window);
  }
  return window;
}

QWidget* WindowCoordinator::makeFittingWindow(std::string_view title, QWidget* content) {
  auto* window = new QWidget(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                          Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
  window->setWindowTitle(textOf(title));
  auto* column = new QVBoxLayout(window);
  column->setContentsMargins(0, 0, 0, 0);
  column->addWidget(content);
  // The window follows as rows come and go; its upper edge stays.
  column->setSizeConstraint(QLayout::SetFixedSize);
  column->activate();
  WindowFrame::center(*window);
  return window;
}

}  // namespace tidemar
