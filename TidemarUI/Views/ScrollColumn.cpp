#include "TidemarUI/Views/ScrollColumn.h"

#include <QApplication>
#include <QScrollBar>
#include <algorithm>

namespace tidemar {

ScrollColumn::ScrollColumn(int maximumWidth, QWidget* parent)
    : QScrollArea(parent), _column(new QVBoxLayout) {
  setFrameShape(QFrame::NoFrame);
  setWidgetResizable(true);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setFocusPolicy(Qt::NoFocus);

  auto* ground = new QWidget;
  auto* content = new QWidget;
  content->setMaximumWidth(maximumWidth);
  content->setLayout(_column);
  auto* line = new QHBoxLayout(ground);
  line->setContentsMargins(0, 0, 0, 0);
  line->addWidget(content);
  _column->setSpacing(0);
  setWidget(ground);
  // The window's own ground shows through.
  viewport()->setAutoFillBackground(false);
  ground->setAutoFillBackground(false);

  // The toolkit follows the Tab key alone, and not what an assistive tool or a shortcut chooses. A
  // window that comes forward stays where it was scrolled to.
  connect(qApp, &QApplication::focusChanged, this, [this](QWidget* before, QWidget* now) {
    if (before != nullptr && now != nullptr && widget()->isAncestorOf(now))
      ensureWidgetVisible(now);
  });
}

void ScrollColumn::scrollToTop() {
  verticalScrollBar()->setValue(0);
}

int ScrollColumn::measureHeight(int width) const {
  // A layout learns of a change below it only by events, and while it is hidden not even then.
  for (QWidget* inner : widget()->findChildren<QWidget*>()) {
    if (inner->layout() != nullptr) inner->layout()->invalidate();
    inner->updateGeometry();
  }
  const QLayout& layout = *widget()->layout();
  const int preferred = layout.hasHeightForWidth() ? layout.totalHeightForWidth(width)
                                                   : layout.totalSizeHint().height();
  return std::max(preferred, layout.totalMinimumSize().height());
}

}  // namespace tidemar
