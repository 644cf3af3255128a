#include "TidemarUI/Views/RowPainting.h"

#include <QFontMetrics>
#include <QStringList>
#include <QStyle>
#include <algorithm>

#include "TidemarUI/Views/Style.h"

namespace tidemar {
namespace {

constexpr int verticalPadding = 6;
constexpr int iconGap = 2 * style::grid;
constexpr int columnGap = 3 * style::grid;

QFont titleFont(const RowContent& content) {
  return style::font(style::TextSize::body,
                     content.isTitleStrong ? QFont::DemiBold : QFont::Normal);
}

QFont detailFont() {
  return style::font(style::TextSize::secondary);
}

/// Draws pieces of one line from its leading edge, whichever side that is.
class LinePainter {
 public:
  LinePainter(QPainter& painter, const QRect& rect, Qt::LayoutDirection direction)
      : _painter(painter), _rect(rect), _direction(direction) {}

  void draw(int leading, int width, const QFont& font, const QColor& color, const QString& text,
            Qt::Alignment alignment = Qt::AlignLeft) const {
    const QRect place(_rect.left() + leading, _rect.top(), width, _rect.height());
    _painter.setFont(font);
    _painter.setPen(color);
    const QString shown = QFontMetrics(font).elidedText(text, Qt::ElideMiddle, width);
    _painter.drawText(QStyle::visualRect(_direction, _rect, place),
                      static_cast<int>(QStyle::visualAlignment(_direction, alignment) |
                                       Qt::AlignVCenter | Qt::TextSingleLine),
                      shown);
  }

 private:
  QPainter& _painter;
  QRect _rect;
  Qt::LayoutDirection _direction;
};

void paintGround(QPainter& painter, const QRect& rect, const RowLook& look,
                 const QPalette& palette) {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  switch (look.highlight) {
    case RowHighlight::none:
      painter.setBrush(Qt::NoBrush);
      break;
    case RowHighlight::highlighted:
      painter.setBrush(style::highlightFill(palette));
      break;
    case RowHighlight::pressed:
      painter.setBrush(style::pressedFill(palette));
      break;
    case RowHighlight::selected:
      painter.setBrush(style::accent(palette));
      break;
  }
  painter.drawRoundedRect(rect, style::rowCorner, style::rowCorner);
  if (!look.hasFocusRing) return;
  const bool isSelected = look.highlight == RowHighlight::selected;
  painter.setPen(QPen(isSelected ? style::onAccent(palette) : style::accent(palette), 2));
  painter.setBrush(Qt::NoBrush);
  const double inset = isSelected ? 3 : 1;
  painter.drawRoundedRect(QRectF(rect).adjusted(inset, inset, -inset, -inset),
                          style::rowCorner - inset, style::rowCorner - inset);
}

}  // namespace

QString RowContent::spoken() const {
  QStringList parts{title};
  for (const QString& text : {trailing, detail}) {
    if (!text.isEmpty()) parts += text;
  }
  return parts.join(QStringLiteral(", "));
}

void paintRow(QPainter& painter, const QRect& rect, const RowContent& content, const RowLook& look,
              const QWidget& widget) {
  const QPalette& palette = widget.palette();
  const Qt::LayoutDirection direction = widget.layoutDirection();
  // Where texts stand follows the screen; how they run, their own language.
  painter.setLayoutDirection(Qt::LayoutDirectionAuto);
  paintGround(painter, rect, look, palette);

  const bool isSelected = look.highlight == RowHighlight::selected;
  const QColor primary = isSelected ? style::onAccent(palette) : style::text(palette);
  const QColor secondary =
      isSelected ? style::mixed(style::onAccent(palette), style::accent(palette), 0.15)
                 : style::secondaryText(palette);

  QRect inner = rect.adjusted(look.inset, verticalPadding, -look.inset, -verticalPadding);
  if (content.iconSize > 0) {
    const QSize size(content.iconSize, content.iconSize);
    const QRect place =
        QStyle::alignedRect(direction, Qt::AlignLeft | Qt::AlignVCenter, size, inner);
    content.icon.paint(&painter, place, Qt::AlignCenter,
                       isSelected ? QIcon::Selected : QIcon::Normal);
    const int taken = content.iconSize + iconGap;
    inner = QStyle::visualRect(direction, inner, inner.adjusted(taken, 0, 0, 0));
  }

  const QFont font = titleFont(content);
  const QFont small = detailFont();
  const int titleHeight = QFontMetrics(font).height();
  const int detailHeight = content.detail.isEmpty() ? 0 : QFontMetrics(small).height();
  const int top = inner.top() + (inner.height() - titleHeight - detailHeight) / 2;

  const QFont plain = style::font(style::TextSize::body);
  const int trailingWidth =
      content.trailing.isEmpty() ? 0 : QFontMetrics(plain).horizontalAdvance(content.trailing) + 1;
  const int titleWidth =
      std::max(0, inner.width() - (trailingWidth > 0 ? trailingWidth + columnGap : 0));
  const LinePainter first(painter, {inner.left(), top, inner.width(), titleHeight}, direction);
  first.draw(0, titleWidth, font, primary, content.title);
  if (trailingWidth > 0) {
    first.draw(inner.width() - trailingWidth, trailingWidth, plain, secondary, content.trailing,
               Qt::AlignRight);
  }
  if (detailHeight > 0) {
    const LinePainter second(
        painter, {inner.left(), top + titleHeight, inner.width(), detailHeight}, direction);
    second.draw(0, inner.width(), small, secondary, content.detail);
  }
}

QSize rowSize(const RowContent& content) {
  const QFontMetrics title(titleFont(content));
  const QFontMetrics small(detailFont());
  const QFontMetrics plain(style::font(style::TextSize::body));
  const int icon = content.iconSize > 0 ? content.iconSize + iconGap : 0;
  const int trailing =
      content.trailing.isEmpty() ? 0 : plain.horizontalAdvance(content.trailing) + columnGap;
  const int lines = title.height() + (content.detail.isEmpty() ? 0 : small.height());
  return {icon + title.horizontalAdvance(content.title) + trailing,
          std::max(lines, content.iconSize) + 2 * verticalPadding};
}

}  // namespace tidemar
