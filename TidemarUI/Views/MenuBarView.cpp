#include "TidemarUI/Views/MenuBarView.h"

#include <QKeyEvent>
#include <QKeySequence>
#include <QPainter>
#include <QScrollBar>
#include <algorithm>
#include <span>
#include <utility>

#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/AccessibleRoles.h"
#include "TidemarUI/Views/Closures.h"
#include "TidemarUI/Views/IconView.h"
#include "TidemarUI/Views/Icons.h"
#include "TidemarUI/Views/ReadingOrder.h"
#include "TidemarUI/Views/Style.h"

namespace tidemar {
namespace {

constexpr int usualWidth = 348;
constexpr int warningIconSize = 16;
constexpr int folderIconSize = 18;

/// Folders beyond this number have a row only while they are in sight or near it.
constexpr int mostRows = 100;

/// How many rows there are beyond the edges of what is in sight, so that the focus finds the next.
constexpr int rowsBeyondSight = 10;

/// From the edge of the popover to its rows; their texts stand further in.
constexpr int side = 14 - style::rowOutset;

int contentWidth() {
  return style::scaled(usualWidth);
}

class Divider : public QWidget {
 public:
  Divider() { setFixedHeight(1); }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter(this).fillRect(rect().adjusted(style::rowOutset, 0, -style::rowOutset, 0),
                            style::hairline(palette()));
  }
};

}  // namespace

/// A folder's way into the main window.
class MenuBarView::FolderRow : public MenuRow {
 public:
  explicit FolderRow(const MenuBarView& view) {
    connect(this, &QPushButton::clicked, this, [this, &view] {
      const FolderSummary summary = _summary;
      callClosure(view.onSelectFolder, summary);
    });
  }

  std::int64_t id() const { return _summary.id; }

  void show(const FolderSummary& summary) {
    if (summary == _summary) return;
    // An icon is another one each time it is made, so a row that stays keeps its own.
    const QIcon icon = summary.path == _summary.path ? content().icon : icons::folder(summary.path);
    _summary = summary;
    const std::string line = summary.place.empty() ? "" : '\n' + summary.place;
    const QString description = textOf(summary.rules + line);
    setToolTip(plainToolTip(description));
    setAccessibleDescription(description);
    setContent({.icon = icon,
                .iconSize = style::scaled(folderIconSize),
                .title = textOf(summary.name),
                .trailing = textOf(summary.distanceToGoing)});
  }

 private:
  FolderSummary _summary;
};

MenuBarView::MenuBarView(const SystemNames& names, QWidget* parent)
    : QWidget(parent),
      _state(std::make_shared<const MenuBarState>()),
      _scroll(new ScrollColumn(contentWidth())),
      _headline(new TextLabel(style::TextSize::sectionHeadline, QFont::DemiBold,
                              TextLabel::Tone::primary, TextLabel::Overflow::wrap)),
      _subheadline(new TextLabel(style::TextSize::body, QFont::Normal, TextLabel::Tone::secondary,
                                 TextLabel::Overflow::wrap)),
      _invitation(new TextLabel(style::TextSize::body, QFont::Normal, TextLabel::Tone::secondary,
                                TextLabel::Overflow::wrap)),
      _forecast(new ForecastList(names)),
      _recentRuns(new RecentRunList) {
  for (TextLabel* label : {_headline, _subheadline, _invitation})
    label->setContentsMargins(style::rowOutset, 0, style::rowOutset, 0);
  _invitation->show(labels::menuBarInvitation(names));
  _warning = makeWarning(names);
  _foldersBlock = makeFolders();
  _footer = makeFooter();

  QVBoxLayout& column = _scroll->column();
  column.setContentsMargins(side, 3 * style::grid, side, 2 * style::grid);
  column.setSpacing(3 * style::grid);
  column.addWidget(_warning);
  auto* headlines = new QVBoxLayout;
  headlines->setSpacing(0);
  headlines->addWidget(_headline);
  headlines->addWidget(_subheadline);
  column.addLayout(headlines);
  for (QWidget* block :
       std::initializer_list<QWidget*>{_invitation, _forecast, _foldersBlock, _recentRuns})
    column.addWidget(block);
  column.addStretch();

  auto* whole = new QVBoxLayout(this);
  whole->setContentsMargins(0, 0, 0, 0);
  whole->setSpacing(0);
  whole->addWidget(_scroll, 1);
  whole->addWidget(_footer);

  connect(_scroll->verticalScrollBar(), &QScrollBar::valueChanged, this, [this] {
    if (_state->folders.size() <= mostRows) return;
    showFolders();
    restoreReadingOrder(*this);
  });
  _forecast->onShowInFinder = [this](const std::vector<FileURL>& items) {
    callClosure(onShowInFinder, items);
  };
  _recentRuns->onPutBack = [this](const RecentRun& run) { callClosure(onUndo, run); };
}

QWidget* MenuBarView::makeWarning(const SystemNames& names) {
  auto* icon = new IconView(warningIconSize);
  icon->show(icons::symbol(icons::Symbol::warning));
  auto* text = new TextLabel(style::TextSize::body, QFont::Normal, TextLabel::Tone::primary,
                             TextLabel::Overflow::wrap);
  text->show(labels::finderExtensionIsOff(names));
  auto* turnOn = new QPushButton(textOf(labels::turnOn));
  turnOn->setAutoDefault(false);
  connect(turnOn, &QPushButton::clicked, this, [this] { callClosure(onTurnOnFinderExtension); });

  auto* line = new QHBoxLayout;
  line->setContentsMargins(style::rowOutset, 0, style::rowOutset, 0);
  line->setSpacing(2 * style::grid);
  line->addWidget(icon);
  line->addWidget(text, 1);
  line->addWidget(turnOn);
  auto* block = new QWidget;
  auto* column = new QVBoxLayout(block);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(3 * style::grid);
  column->addLayout(line);
  column->addWidget(new Divider);
  return block;
}

QWidget* MenuBarView::makeFolders() {
  _folders = new KeyedColumn<std::int64_t, FolderRow>;
  markAsList(*_folders, labels::folders);
  auto* block = new QWidget;
  auto* column = new QVBoxLayout(block);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(style::grid);
  column->addWidget(makeBlockTitle(labels::folders));
  column->addWidget(_folders);
  return block;
}

QWidget* MenuBarView::makeFooter() {
  const auto makeRow = [this](std::string_view title, const QString& shortcut,
                              const std::function<void()>& closure) {
    auto* row = new MenuRow;
    row->setContent({.title = textOf(title), .trailing = shortcut});
    connect(row, &QPushButton::clicked, this, [&closure] { callClosure(closure); });
    return row;
  };
  const QKeySequence quit(Qt::CTRL | Qt::Key_Q);
  auto* footer = new QWidget;
  auto* column = new QVBoxLayout(footer);
  column->setContentsMargins(side, 0, side, side);
  column->setSpacing(0);
  column->addWidget(new Divider);
  column->addSpacing(style::grid);
  column->addWidget(makeRow(labels::openTidemar, {}, onOpen));
  column->addWidget(makeRow(labels::quitTidemar, quit.toString(QKeySequence::NativeText), onQuit));
  return footer;
}

void MenuBarView::setState(std::shared_ptr<const MenuBarState> shared) {
  _state = std::move(shared);
  const MenuBarState& state = *_state;
  const MenuBarBlocks blocks = menuBarBlocks(state);
  _warning->setVisible(blocks.hasExtensionWarning);
  _headline->show(state.headline);
  _subheadline->show(state.subheadline);
  _invitation->setVisible(blocks.hasInvitation);
  _forecast->setGroups({_state, &state.forecast});
  _forecast->setVisible(blocks.hasForecast);
  showFolders();
  _foldersBlock->setVisible(blocks.hasFolders);
  _recentRuns->setRuns(state.recentRuns);
  _recentRuns->setVisible(blocks.hasRecentRuns);
  restoreReadingOrder(*this);
  _contentHeight = _scroll->measureHeight(contentWidth());
  updateGeometry();
}

/// Gives the folders in sight their rows, and those of a short list all of them.
void MenuBarView::showFolders() {
  const std::span<const FolderSummary> all = _state->folders;
  const int count = static_cast<int>(all.size());
  const int height = rowSize({.iconSize = style::scaled(folderIconSize)}).height();
  int first = 0;
  int last = count;
  if (count > mostRows) {
    const int top = _folders->mapTo(_scroll->viewport(), QPoint()).y();
    const int sight = _scroll->viewport()->height() / height + 1;
    first = std::clamp(-top / height - rowsBeyondSight, 0, count - 1);
    last = std::clamp(-top / height + sight + rowsBeyondSight, first + 1, count);
    last = std::min(last, first + mostRows);
  }
  // A row that has the focus and scrolls out of sight leaves it to the popover, since the toolkit
  // would scroll to wherever it went.
  const auto* focused = dynamic_cast<const FolderRow*>(focusWidget());
  const auto isFocused = [&](const FolderSummary& summary) { return focused->id() == summary.id; };
  const auto shown =
      all.subspan(static_cast<std::size_t>(first), static_cast<std::size_t>(last - first));
  if (focused != nullptr && focused->hasFocus() && std::ranges::none_of(shown, isFocused))
    setFocus();
  _folders->update(
      shown, [](const FolderSummary& summary) { return summary.id; },
      [this] { return new FolderRow(*this); },
      [](FolderRow& row, const FolderSummary& summary) { row.show(summary); });
  _folders->setRoom(first * height, (count - last) * height);
}

QSize MenuBarView::sizeHint() const {
  return {contentWidth(), _contentHeight + _footer->sizeHint().height()};
}

void MenuBarView::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  if (_state->folders.size() > mostRows) showFolders();
}

void MenuBarView::keyPressEvent(QKeyEvent* event) {
  // Rows are walked through as in a menu.
  if (event->key() == Qt::Key_Down) {
    focusNextPrevChild(true);
  } else if (event->key() == Qt::Key_Up) {
    focusNextPrevChild(false);
  } else {
    QWidget::keyPressEvent(event);
  }
}

}  // namespace tidemar
