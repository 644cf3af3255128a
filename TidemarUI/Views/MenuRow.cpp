#include "TidemarUI/Views/MenuRow.h"

#include <QEvent>
#include <QKeyEvent>
#include <QPainter>

#include "TidemarUI/Views/Style.h"

namespace tidemar {

MenuRow::MenuRow(QWidget* parent) : QPushButton(parent) {
  setAttribute(Qt::WA_Hover);
  setAutoDefault(false);
  // A click acts and leaves nothing behind; a row that has the focus was reached by the keyboard.
  setFocusPolicy(Qt::TabFocus);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void MenuRow::setContent(RowContent content) {
  const QSize before = rowSize(_content);
  const bool isSame = content.title == _content.title && content.detail == _content.detail &&
                      content.trailing == _content.trailing &&
                      content.isTitleStrong == _content.isTitleStrong &&
                      content.icon.cacheKey() == _content.icon.cacheKey();
  if (isSame) return;
  _content = std::move(content);
  setAccessibleName(_content.spoken());
  if (rowSize(_content) != before) updateGeometry();
  update();
}

QSize MenuRow::sizeHint() const {
  return rowSize(_content) + QSize(2 * style::rowOutset, 0);
}

QSize MenuRow::minimumSizeHint() const {
  return {20 * style::grid, sizeHint().height()};
}

void MenuRow::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  RowLook look{.inset = style::rowOutset};
  if (isDown()) {
    look.highlight = RowHighlight::pressed;
  } else if (underMouse() || hasFocus()) {
    look.highlight = RowHighlight::highlighted;
  }
  look.hasFocusRing = hasFocus();
  paintRow(painter, rect(), _content, look, *this);
}

void MenuRow::changeEvent(QEvent* event) {
  if (event->type() == QEvent::ApplicationFontChange) updateGeometry();
  QPushButton::changeEvent(event);
}

void MenuRow::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
    click();
    return;
  }
  QPushButton::keyPressEvent(event);
}

}  // namespace tidemar
