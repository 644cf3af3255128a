#include "TidemarUI/Views/Sidebar.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStyledItemDelegate>
#include <array>
#include <utility>

#include "TidemarUI/State/Labels.h"
#include "TidemarUI/Views/AccessibleRoles.h"
#include "TidemarUI/Views/Closures.h"
#include "TidemarUI/Views/Icons.h"
#include "TidemarUI/Views/RowPainting.h"
#include "TidemarUI/Views/Style.h"
#include "TidemarUI/Views/TextLabel.h"

namespace tidemar {
namespace {

constexpr int iconSize = 16;
constexpr int margin = 2 * style::grid;
constexpr int titleTop = 3 * style::grid;
constexpr int titleBottom = style::grid;

RowContent contentOf(const SidebarRow& row) {
  return {.icon = row.isFolder() ? icons::folder(row.path) : icons::symbol(icons::Symbol::calendar),
          .iconSize = style::scaled(iconSize),
          .title = textOf(row.name),
          .detail = textOf(row.detail)};
}

QFont titleFont() {
  return style::font(style::TextSize::secondary, QFont::DemiBold);
}

class SidebarDelegate : public QStyledItemDelegate {
 public:
  SidebarDelegate(const SidebarModel& model, QObject* parent)
      : QStyledItemDelegate(parent), _model(model) {}

  QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex& index) const override {
    const SidebarRow& row = _model.row(index);
    // Rows fill the list, whose width isn't theirs to ask for. A list asks all of them at once, and
    // there are but three heights.
    const auto kind = static_cast<std::size_t>(!row.selection ? 0 : row.detail.empty() ? 1 : 2);
    int& height = _heights[kind];
    if (height == 0) height = heightOf(row);
    return {0, height};
  }

  void forgetHeights() { _heights = {}; }

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    const SidebarRow& row = _model.row(index);
    painter->save();
    if (row.selection) {
      RowLook look{.inset = margin};
      if (option.state.testFlag(QStyle::State_Selected)) {
        look.highlight = RowHighlight::selected;
      } else if (option.state.testFlag(QStyle::State_MouseOver)) {
        look.highlight = RowHighlight::highlighted;
      }
      look.hasFocusRing = option.state.testFlag(QStyle::State_HasFocus) &&
                          option.widget->window()->testAttribute(Qt::WA_KeyboardFocusChange);
      paintRow(*painter, option.rect, contentOf(row), look, *option.widget);
    } else {
      painter->setFont(titleFont());
      painter->setPen(style::secondaryText(option.palette));
      painter->drawText(option.rect.adjusted(margin, titleTop, -margin, -titleBottom),
                        static_cast<int>(QStyle::visualAlignment(option.direction, Qt::AlignLeft)),
                        textOf(row.name));
    }
    painter->restore();
  }

 private:
  static int heightOf(const SidebarRow& row) {
    if (!row.selection) return titleTop + QFontMetrics(titleFont()).height() + titleBottom;
    return rowSize({.iconSize = style::scaled(iconSize), .detail = textOf(row.detail)}).height();
  }

  const SidebarModel& _model;
  mutable std::array<int, 3> _heights{};  ///< Of a title, a row of one line and one of two.
};

}  // namespace

Sidebar::Sidebar(const SystemNames& names) : _names(names) {
  setModel(&_model);
  setItemDelegate(new SidebarDelegate(_model, this));
  setFrameShape(QFrame::NoFrame);
  setMouseTracking(true);
  viewport()->setAttribute(Qt::WA_Hover);
  viewport()->setAutoFillBackground(false);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollMode(ScrollPerPixel);
  setResizeMode(Adjust);
  setViewportMargins(margin, margin, margin, margin);
  markAsList(*this, labels::folders);
}

void Sidebar::setState(const MainState& state, const std::optional<MainSelection>& selection) {
  const QScopedValueRollback following(_isFollowing, true);
  _model.setRows(sidebarRows(state));
  const QModelIndex index = _model.indexOf(selection);
  // What the user chose just now comes later than this selection.
  if (_chosen || index == currentIndex()) return;
  setCurrentIndex(index);
  if (!index.isValid()) clearSelection();
}

void Sidebar::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  QListView::currentChanged(current, previous);
  if (_isFollowing || !current.isValid()) return;
  const auto selection = _model.row(current).selection;
  if (!selection || std::exchange(_chosen, selection)) return;
  // The list has still to finish its move.
  const auto handOut = [this] {
    const auto chosen = std::exchange(_chosen, std::nullopt);
    callClosure(onSelect, *chosen);
  };
  QMetaObject::invokeMethod(this, handOut, Qt::QueuedConnection);
}

void Sidebar::resizeEvent(QResizeEvent* event) {
  const bool wasInSight = QRect(QPoint(), event->oldSize()).intersects(visualRect(currentIndex()));
  QListView::resizeEvent(event);
  // A list that becomes lower would cut it in half.
  if (wasInSight) scrollTo(currentIndex());
}

void Sidebar::changeEvent(QEvent* event) {
  if (event->type() == QEvent::ApplicationFontChange || event->type() == QEvent::FontChange ||
      event->type() == QEvent::StyleChange)
    static_cast<SidebarDelegate*>(itemDelegate())->forgetHeights();
  QListView::changeEvent(event);
}

void Sidebar::keyPressEvent(QKeyEvent* event) {
  const QModelIndex index = currentIndex();
  if (event->key() != Qt::Key_Delete || !index.isValid() || !_model.row(index).isFolder()) {
    QListView::keyPressEvent(event);
    return;
  }
  const std::int64_t id = *_model.row(index).selection->folderID;
  callClosure(onRemoveFolder, id);
}

void Sidebar::focusInEvent(QFocusEvent* event) {
  // A list without a current row takes its first one when the focus comes, which nobody chose.
  const QScopedValueRollback following(_isFollowing, true);
  QListView::focusInEvent(event);
}

void Sidebar::mousePressEvent(QMouseEvent* event) {
  // The menu of a row is opened without going to its page.
  if (event->button() != Qt::RightButton) QListView::mousePressEvent(event);
}

void Sidebar::contextMenuEvent(QContextMenuEvent* event) {
  const bool isByKeyboard = event->reason() == QContextMenuEvent::Keyboard;
  const QModelIndex index = isByKeyboard ? currentIndex() : indexAt(event->pos());
  if (!index.isValid() || !_model.row(index).isFolder()) return;
  const SidebarRow& row = _model.row(index);

  auto* menu = new QMenu(this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  // The menu goes on after it told what was chosen.
  const auto addAction = [this, menu](std::string_view text, const auto& action) {
    connect(menu->addAction(textOf(text)), &QAction::triggered, this, action, Qt::QueuedConnection);
  };
  addAction(labels::showInFinder(_names),
            [this, path = row.path] { callClosure(onShowInFinder, std::vector{FileURL(path)}); });
  addAction(labels::removeFromTidemar,
            [this, id = *row.selection->folderID] { callClosure(onRemoveFolder, id); });
  menu->popup(isByKeyboard ? viewport()->mapToGlobal(visualRect(index).center())
                           : event->globalPos());
}

}  // namespace tidemar
