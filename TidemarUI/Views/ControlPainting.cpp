#include "TidemarUI/Views/ControlPainting.h"

#include <QPainter>
#include <algorithm>

#include "TidemarUI/Views/Style.h"

namespace tidemar::controls {
namespace {

constexpr double controlCorner = 7;
constexpr int stepperWidth = 22;

}  // namespace

bool hasKeyboardFocus(const QStyleOption& option) {
  return option.state.testFlag(QStyle::State_HasFocus) &&
         option.state.testFlag(QStyle::State_KeyboardFocusChange);
}

void drawBox(QPainter& painter, const QRect& rect, double corner, const QColor& fill,
             const QColor& border, double borderWidth) {
  const double half = borderWidth / 2;
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(border, borderWidth));
  painter.setBrush(fill);
  painter.drawRoundedRect(QRectF(rect).adjusted(half, half, -half, -half), corner, corner);
}

void drawButton(QPainter& painter, const QStyleOption& option, bool isDefault) {
  const QPalette& palette = option.palette;
  const bool isFocused = hasKeyboardFocus(option);
  const bool isAccented = isFocused || isDefault;
  drawBox(painter, option.rect, controlCorner, style::cardFill(palette),
          isAccented ? style::accent(palette) : style::hairline(palette), isFocused ? 2 : 1);
  if (!option.state.testFlag(QStyle::State_Enabled)) return;
  const bool isDown = option.state & (QStyle::State_Sunken | QStyle::State_On);
  if (!isDown && !option.state.testFlag(QStyle::State_MouseOver)) return;
  drawBox(painter, option.rect.adjusted(1, 1, -1, -1), controlCorner - 1,
          isDown ? style::pressedFill(palette) : style::highlightFill(palette), Qt::transparent);
}

void drawChevron(QPainter& painter, const QPointF& center, double size, bool isUp,
                 const QColor& color) {
  const double growth = style::scaled(100) / 100.0;
  size *= growth;
  const double lift = isUp ? -size / 2 : size / 2;
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(color, 1.5 * growth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.setBrush(Qt::NoBrush);
  painter.drawPolyline(QPolygonF{center + QPointF(-size, -lift), center + QPointF(0, lift),
                                 center + QPointF(size, -lift)});
}

void drawCheckBox(QPainter& painter, const QStyleOption& option) {
  const QPalette& palette = option.palette;
  const bool isOn = option.state.testFlag(QStyle::State_On);
  if (hasKeyboardFocus(option)) {
    drawBox(painter, option.rect.adjusted(-3, -3, 3, 3), 6.5, Qt::transparent,
            style::accent(palette), 2);
  }
  drawBox(painter, option.rect, 4.5, isOn ? style::accent(palette) : style::fieldFill(palette),
          isOn ? style::accent(palette) : style::secondaryText(palette), 1.4);
  if (option.state.testFlag(QStyle::State_Enabled) &&
      option.state & (QStyle::State_MouseOver | QStyle::State_Sunken)) {
    drawBox(painter, option.rect, 4.5, style::highlightFill(palette), Qt::transparent);
  }
  if (!isOn) return;
  const QRectF rect = option.rect;
  painter.setPen(QPen(style::onAccent(palette), 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.setBrush(Qt::NoBrush);
  const auto at = [&rect](double x, double y) {
    return QPointF(rect.left() + rect.width() * x, rect.top() + rect.height() * y);
  };
  painter.drawPolyline(QPolygonF{at(0.26, 0.52), at(0.43, 0.70), at(0.75, 0.32)});
}

void drawNumberField(QPainter& painter, const QStyleOptionSpinBox& option, const QStyle& style) {
  const QPalette& palette = option.palette;
  const bool isFocused = option.state.testFlag(QStyle::State_HasFocus);
  drawBox(painter, option.rect, controlCorner - 1, style::fieldFill(palette),
          isFocused ? style::accent(palette) : style::hairline(palette), isFocused ? 2 : 1);
  for (const auto& [control, flag] :
       {std::pair(QStyle::SC_SpinBoxUp, QAbstractSpinBox::StepUpEnabled),
        std::pair(QStyle::SC_SpinBoxDown, QAbstractSpinBox::StepDownEnabled)}) {
    const QRect rect = style.subControlRect(QStyle::CC_SpinBox, &option, control, nullptr);
    const bool isActive = option.activeSubControls == control &&
                          option.state & (QStyle::State_MouseOver | QStyle::State_Sunken);
    const bool isUsable = option.stepEnabled.testFlag(flag);
    if (isActive && isUsable) {
      drawBox(painter, rect, 4,
              option.state.testFlag(QStyle::State_Sunken) ? style::pressedFill(palette)
                                                          : style::highlightFill(palette),
              Qt::transparent);
    }
    painter.save();
    if (!isUsable && option.state.testFlag(QStyle::State_Enabled))
      painter.setOpacity(style::disabledOpacity);
    drawChevron(painter, QRectF(rect).center(), 3, control == QStyle::SC_SpinBoxUp,
                style::secondaryText(palette));
    painter.restore();
  }
}

void drawScrollBar(QPainter& painter, const QStyleOptionSlider& option, const QStyle& style) {
  if (option.maximum <= option.minimum) return;
  const QRect slider =
      style.subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, nullptr);
  const bool isActive = option.state & (QStyle::State_MouseOver | QStyle::State_Sunken);
  QColor color = style::text(option.palette);
  color.setAlphaF(isActive ? 0.42F : 0.22F);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(color);
  const QRectF handle = QRectF(slider).adjusted(2, 2, -2, -2);
  const double corner = std::min(handle.width(), handle.height()) / 2;
  painter.drawRoundedRect(handle, corner, corner);
}

QRect scrollBarRect(const QStyleOptionSlider& option, QStyle::SubControl control) {
  const bool isVertical = option.orientation == Qt::Vertical;
  const int length = isVertical ? option.rect.height() : option.rect.width();
  const int range = option.maximum - option.minimum;
  const int handle = range <= 0 ? length
                                : std::clamp(static_cast<int>(qint64{length} * option.pageStep /
                                                              std::max(1, range + option.pageStep)),
                                             std::min(32, length), length);
  const int start = QStyle::sliderPositionFromValue(
      option.minimum, option.maximum, option.sliderPosition, length - handle, option.upsideDown);
  const auto part = [&](int from, int size) {
    return isVertical
               ? QRect(option.rect.left(), option.rect.top() + from, option.rect.width(), size)
               : QRect(option.rect.left() + from, option.rect.top(), size, option.rect.height());
  };
  switch (control) {
    case QStyle::SC_ScrollBarSlider:
      return part(start, handle);
    case QStyle::SC_ScrollBarSubPage:
      return part(0, start);
    case QStyle::SC_ScrollBarAddPage:
      return part(start + handle, length - start - handle);
    case QStyle::SC_ScrollBarGroove:
      return option.rect;
    default:
      return {};
  }
}

QRect numberFieldRect(const QStyleOptionSpinBox& option, QStyle::SubControl control) {
  const QRect rect = option.rect;
  const int half = rect.height() / 2;
  const QRect steppers(rect.right() - stepperWidth, rect.top() + 2, stepperWidth - 1,
                       rect.height() - 4);
  QRect part;
  switch (control) {
    case QStyle::SC_SpinBoxUp:
      part = steppers.adjusted(0, 0, 0, -(half - 2));
      break;
    case QStyle::SC_SpinBoxDown:
      part = steppers.adjusted(0, half - 2, 0, 0);
      break;
    case QStyle::SC_SpinBoxEditField:
      part = rect.adjusted(6, 2, -stepperWidth - 2, -2);
      break;
    default:
      part = rect;
  }
  return QStyle::visualRect(option.direction, rect, part);
}

}  // namespace tidemar::controls
