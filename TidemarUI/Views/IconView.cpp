#include "TidemarUI/Views/IconView.h"

#include <QEvent>
#include <QPainter>

#include "TidemarUI/Views/AccessibleRoles.h"
#include "TidemarUI/Views/Style.h"

namespace tidemar {

IconView::IconView(int side) : _side(side) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  markAsDecoration(*this);
}

void IconView::show(const QIcon& icon) {
  _icon = icon;
  update();
}

QSize IconView::sizeHint() const {
  const int side = style::scaled(_side);
  return {side, side};
}

void IconView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  _icon.paint(&painter, rect());
}

void IconView::changeEvent(QEvent* event) {
  if (event->type() == QEvent::FontChange) updateGeometry();
  QWidget::changeEvent(event);
}

}  // namespace tidemar
