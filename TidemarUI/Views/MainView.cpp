#include "TidemarUI/Views/MainView.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QMenu>
#include <QPainter>
#include <QPointer>
#include <QVBoxLayout>
#include <algorithm>

#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/Closures.h"
#include "TidemarUI/Views/FolderDetailView.h"
#include "TidemarUI/Views/Icons.h"
#include "TidemarUI/Views/OverviewView.h"
#include "TidemarUI/Views/Sidebar.h"
#include "TidemarUI/Views/Style.h"

namespace tidemar {
namespace {

constexpr int barButtonSize = 28;
constexpr int barIconSize = 16;
constexpr QSize smallestSize(640, 420);
constexpr int pagesNeed = 565;  // the width at which nothing of a folder's page is cut
constexpr int widestSidebar = 232;
constexpr int narrowestSidebar = 184;

/// The ground of the sidebar, with a hairline on its inner side and one over the bar.
class SidebarPane : public QWidget {
 public:
  QWidget* bar = nullptr;

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    painter.fillRect(rect(), style::sidebarFill(palette()));
    const QColor line = style::hairline(palette());
    const int edge = layoutDirection() == Qt::RightToLeft ? 0 : width() - 1;
    painter.fillRect(QRect(edge, 0, 1, height()), line);
    painter.fillRect(QRect(0, bar->geometry().top(), width(), 1), line);
  }
};

QToolButton* makeBarButton(icons::Symbol symbol, std::string_view name) {
  auto* button = new QToolButton;
  button->setIcon(icons::symbol(symbol));
  button->setAutoRaise(true);
  button->setToolTip(textOf(name));
  button->setAccessibleName(textOf(name));
  button->setFocusPolicy(Qt::StrongFocus);
  return button;
}

}  // namespace

MainView::MainView(const Formats& formats, const std::string& binName, const SystemNames& names,
                   QWidget* parent)
    : QWidget(parent),
      _state(std::make_shared<const MainState>()),
      _sidebar(new Sidebar(names)),
      _add(makeBarButton(icons::Symbol::plus, labels::addAFolder)),
      _remove(makeBarButton(icons::Symbol::minus, labels::removeFromTidemar)),
      _menu(makeBarButton(icons::Symbol::menu, labels::menu)),
      _detail(new QStackedWidget),
      _overview(new OverviewView(names)),
      _folder(new FolderDetailView(formats, binName, names)) {
  _sidebarPane = makeSidebarPane();
  _detail->addWidget(_overview);
  _detail->addWidget(_folder);
  auto* line = new QHBoxLayout(this);
  line->setContentsMargins(0, 0, 0, 0);
  line->setSpacing(0);
  line->addWidget(_sidebarPane);
  line->addWidget(_detail, 1);
  connectClosures();
  showState();
}

QWidget* MainView::makeSidebarPane() {
  auto* pane = new SidebarPane;
  pane->bar = makeBar();
  auto* column = new QVBoxLayout(pane);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(_sidebar, 1);
  column->addWidget(pane->bar);
  return pane;
}

QWidget* MainView::makeBar() {
  auto* bar = new QWidget;
  auto* line = new QHBoxLayout(bar);
  line->setContentsMargins(2 * style::grid, style::grid + 1, 2 * style::grid, style::grid);
  line->setSpacing(2);
  line->addWidget(_add);
  line->addWidget(_remove);
  line->addStretch();
  line->addWidget(_menu);
  return bar;
}

void MainView::connectClosures() {
  _sidebar->onSelect = [this](const MainSelection& selection) { callClosure(onSelect, selection); };
  const auto removeFolder = [this](std::int64_t id) { callClosure(onRemoveFolder, id); };
  const auto showInFinder = [this](const std::vector<FileURL>& items) {
    callClosure(onShowInFinder, items);
  };
  _sidebar->onRemoveFolder = removeFolder;
  _sidebar->onShowInFinder = showInFinder;
  connect(_add, &QToolButton::clicked, this, [this] { callClosure(onAddFolder); });
  connect(_remove, &QToolButton::clicked, this, [this, removeFolder] {
    if (const auto id = removableFolderID(_selection)) removeFolder(*id);
  });
  _overview->onPutBack = [this](const RecentRun& run) { callClosure(onPutBack, run); };
  _overview->onShowInFinder = showInFinder;
  _folder->onShowInFinder = showInFinder;
  _folder->onSetTemporary = [this](std::int64_t id, bool isTemporary) {
    callClosure(onSetTemporary, id, isTemporary);
  };
  _folder->onChangeSettings = [this](std::int64_t id, const TemporarySettings& shown,
                                     const TemporarySettings& wanted) {
    callClosure(onChangeSettings, id, shown, wanted);
  };
}

void MainView::setState(std::shared_ptr<const MainState> state) {
  _state = std::move(state);
  showState();
}

void MainView::setSelection(const std::optional<MainSelection>& selection) {
  if (selection == _selection) return;
  const QPointer<MainView> self(this);
  finishEdits();
  if (!self) return;
  _selection = selection;
  showState();
}

void MainView::finishEdits() {
  _folder->finishEdits();
}

void MainView::setMenuActions(const QList<QAction*>& actions) {
  auto* menu = new QMenu(_menu);
  menu->addActions(actions);
  _menu->setMenu(menu);
  _menu->setPopupMode(QToolButton::InstantPopup);
}

void MainView::showState() {
  // An edit that ends with its page may end the window too, or bring the next state.
  const auto state = _state;
  _sidebar->setState(*state, _selection);
  _remove->setEnabled(removableFolderID(_selection).has_value());
  _overview->setState(state);
  const MainFolder* folder = shownFolder(*state, _selection);
  const QPointer<MainView> self(this);
  _folder->setFolder({state, folder});
  if (!self || state != _state) return;
  _detail->setCurrentWidget(folder == nullptr ? static_cast<QWidget*>(_overview) : _folder);
}

void MainView::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  window()->installEventFilter(this);
}

bool MainView::eventFilter(QObject* object, QEvent* event) {
  if (event->type() == QEvent::Close && object == window()) {
    const QPointer<MainView> self(this);
    finishEdits();
    if (!self) return true;
  }
  return QWidget::eventFilter(object, event);
}

QSize MainView::minimumSizeHint() const {
  return QWidget::minimumSizeHint()
      .expandedTo(smallestSize)
      .expandedTo({style::scaled(pagesNeed), 0});
}

void MainView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  fitSidebar();
}

void MainView::changeEvent(QEvent* event) {
  if (event->type() == QEvent::ApplicationFontChange) fitSidebar();
  QWidget::changeEvent(event);
}

void MainView::fitSidebar() {
  const int widest = style::scaled(widestSidebar);
  // With large type in a small window the page has more to show than the list.
  const int narrowest = std::min(style::scaled(narrowestSidebar), width() * 2 / 5);
  _sidebarPane->setFixedWidth(std::clamp(width() * 2 / 7, std::min(narrowest, widest), widest));
  const int icon = style::scaled(barIconSize);
  const int button = style::scaled(barButtonSize);
  for (QToolButton* each : {_add, _remove, _menu}) {
    each->setIconSize({icon, icon});
    each->setFixedSize(button, button);
  }
}

}  // namespace tidemar
