#include "TidemarUI/Views/QuietStyle.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QStyleOption>
#include <algorithm>

#include "TidemarUI/Views/Icons.h"
#include "TidemarUI/Views/Style.h"

namespace tidemar {
namespace {

constexpr double controlCorner = 7;
constexpr int controlHeight = 28;
constexpr int stepperWidth = 22;
constexpr int scrollBarExtent = 10;
constexpr int pickerPadding = 10;
constexpr int pickerArrowWidth = 26;

bool hasKeyboardFocus(const QStyleOption& option) {
  return option.state.testFlag(QStyle::State_HasFocus) &&
         option.state.testFlag(QStyle::State_KeyboardFocusChange);
}

void drawBox(QPainter& painter, const QRect& rect, double corner, const QColor& fill,
             const QColor& border, double borderWidth = 1) {
  const double half = borderWidth / 2;
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(border, borderWidth));
  painter.setBrush(fill);
  painter.drawRoundedRect(QRectF(rect).adjusted(half, half, -half, -half), corner, corner);
}

/// The ground of whatever can be pressed or opened.
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
  const double lift = isUp ? -size / 2 : size / 2;
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(color, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
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

}  // namespace

QuietStyle::QuietStyle() : QProxyStyle(QStringLiteral("fusion")) {}

void QuietStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                               QPainter* painter, const QWidget* widget) const {
  painter->save();
  if (!option->state.testFlag(State_Enabled)) painter->setOpacity(style::disabledOpacity);
  switch (element) {
    case PE_PanelButtonCommand: {
      const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
      drawButton(*painter, *option,
                 button != nullptr && button->features & QStyleOptionButton::DefaultButton);
      break;
    }
    case PE_PanelButtonTool:
      if (option->state & (State_MouseOver | State_Sunken | State_On) &&
          option->state.testFlag(State_Enabled)) {
        drawBox(*painter, option->rect, style::grid + 2,
                option->state & (State_Sunken | State_On) ? style::pressedFill(option->palette)
                                                          : style::highlightFill(option->palette),
                Qt::transparent);
      }
      if (hasKeyboardFocus(*option)) {
        drawBox(*painter, option->rect, style::grid + 2, Qt::transparent,
                style::accent(option->palette), 2);
      }
      break;
    case PE_IndicatorCheckBox:
      drawCheckBox(*painter, *option);
      break;
    case PE_PanelLineEdit:
      // Within a number field the ground is the field's.
      if (widget != nullptr && qobject_cast<QAbstractSpinBox*>(widget->parentWidget())) break;
      painter->setOpacity(1);
      QProxyStyle::drawPrimitive(element, option, painter, widget);
      break;
    case PE_FrameFocusRect:
      // The controls that are drawn here show the focus by themselves.
      break;
    default:
      painter->setOpacity(1);
      QProxyStyle::drawPrimitive(element, option, painter, widget);
  }
  painter->restore();
}

void QuietStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                             const QWidget* widget) const {
  if (element == CE_CheckBox) {
    // The focus shows around the box alone.
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
    if (button != nullptr) {
      QStyleOptionButton indicator(*button);
      indicator.rect = subElementRect(SE_CheckBoxIndicator, button, widget);
      drawPrimitive(PE_IndicatorCheckBox, &indicator, painter, widget);
      painter->save();
      if (!option->state.testFlag(State_Enabled)) painter->setOpacity(style::disabledOpacity);
      painter->setPen(style::text(option->palette));
      painter->drawText(subElementRect(SE_CheckBoxContents, button, widget),
                        static_cast<int>(visualAlignment(option->direction, Qt::AlignLeft) |
                                         Qt::AlignVCenter | Qt::TextShowMnemonic),
                        button->text);
      painter->restore();
      return;
    }
  }
  QProxyStyle::drawControl(element, option, painter, widget);
}

void QuietStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                    QPainter* painter, const QWidget* widget) const {
  painter->save();
  if (!option->state.testFlag(State_Enabled)) painter->setOpacity(style::disabledOpacity);
  switch (control) {
    case CC_SpinBox:
      if (const auto* spinBox = qstyleoption_cast<const QStyleOptionSpinBox*>(option))
        drawNumberField(*painter, *spinBox, *this);
      break;
    case CC_ComboBox: {
      drawButton(*painter, *option, false);
      const QRect arrow = subControlRect(CC_ComboBox, option, SC_ComboBoxArrow, widget);
      drawChevron(*painter, QRectF(arrow).center(), 3.5, false,
                  style::secondaryText(option->palette));
      break;
    }
    case CC_ScrollBar:
      if (const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option))
        drawScrollBar(*painter, *slider, *this);
      break;
    case CC_ToolButton:
      painter->setOpacity(1);
      if (const auto* button = qstyleoption_cast<const QStyleOptionToolButton*>(option)) {
        // That a button opens a menu its picture says; there is no arrow beside it.
        drawPrimitive(PE_PanelButtonTool, button, painter, widget);
        drawControl(CE_ToolButtonLabel, button, painter, widget);
      }
      break;
    default:
      painter->setOpacity(1);
      QProxyStyle::drawComplexControl(control, option, painter, widget);
  }
  painter->restore();
}

void QuietStyle::drawItemText(QPainter* painter, const QRect& rect, int flags,
                              const QPalette& palette, bool isEnabled, const QString& text,
                              QPalette::ColorRole role) const {
  const Qt::LayoutDirection before = painter->layoutDirection();
  painter->setLayoutDirection(Qt::LayoutDirectionAuto);
  QProxyStyle::drawItemText(painter, rect, flags, palette, isEnabled, text, role);
  painter->setLayoutDirection(before);
}

QRect QuietStyle::subElementRect(SubElement element, const QStyleOption* option,
                                 const QWidget* widget) const {
  const QRect usual = QProxyStyle::subElementRect(element, option, widget);
  if (element != SE_CheckBoxIndicator && element != SE_CheckBoxContents) return usual;
  // The ring of the focus needs room at the edge.
  const bool isMirrored = option->direction == Qt::RightToLeft;
  return usual.translated(isMirrored ? -style::checkBoxRing : style::checkBoxRing, 0);
}

QRect QuietStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                                 SubControl subControl, const QWidget* widget) const {
  if (control == CC_ScrollBar) {
    if (const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option))
      return scrollBarRect(*slider, subControl);
  }
  if (control == CC_SpinBox) {
    if (const auto* spinBox = qstyleoption_cast<const QStyleOptionSpinBox*>(option))
      return numberFieldRect(*spinBox, subControl);
  }
  if (control == CC_ComboBox && subControl == SC_ComboBoxEditField) {
    const QRect text = option->rect.adjusted(pickerPadding, 0, -pickerArrowWidth, 0);
    return visualRect(option->direction, option->rect, text);
  }
  if (control == CC_ComboBox && subControl == SC_ComboBoxArrow) {
    const QRect arrow(option->rect.right() - pickerArrowWidth, option->rect.top(), pickerArrowWidth,
                      option->rect.height());
    return visualRect(option->direction, option->rect, arrow);
  }
  return QProxyStyle::subControlRect(control, option, subControl, widget);
}

QSize QuietStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                   const QWidget* widget) const {
  const QSize usual = QProxyStyle::sizeFromContents(type, option, size, widget);
  const int height = std::max(controlHeight, option->fontMetrics.height() + 2 * style::grid);
  switch (type) {
    case CT_PushButton:
      return {size.width() + 6 * style::grid, height};
    case CT_CheckBox:
      return usual + QSize(style::checkBoxRing, 2 * style::checkBoxRing);
    case CT_ComboBox:
      return {size.width() + pickerPadding + pickerArrowWidth + style::grid, height};
    case CT_SpinBox:
      return {usual.width(), height};
    default:
      return usual;
  }
}

QIcon QuietStyle::standardIcon(StandardPixmap pixmap, const QStyleOption* option,
                               const QWidget* widget) const {
  // A message is the application speaking; how grave it is, its words say.
  if (pixmap == SP_MessageBoxWarning || pixmap == SP_MessageBoxCritical)
    return icons::application();
  return QProxyStyle::standardIcon(pixmap, option, widget);
}

void QuietStyle::polish(QWidget* widget) {
  QProxyStyle::polish(widget);
  // The toolkit's name for a message's first line.
  if (widget->objectName() == QStringLiteral("qt_msgbox_label"))
    widget->setFont(style::font(style::TextSize::sectionHeadline, QFont::DemiBold));
}

int QuietStyle::pixelMetric(PixelMetric metric, const QStyleOption* option,
                            const QWidget* widget) const {
  switch (metric) {
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
      return 4 * style::grid;
    case PM_CheckBoxLabelSpacing:
      return 10;
    case PM_MessageBoxIconSize:
      return 12 * style::grid;
    case PM_ScrollBarExtent:
      return scrollBarExtent;
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
      return 0;
    default:
      return QProxyStyle::pixelMetric(metric, option, widget);
  }
}

void adoptQuietStyle() {
  if (QApplication::style()->name().compare(QStringLiteral("fusion"), Qt::CaseInsensitive) == 0)
    QApplication::setStyle(new QuietStyle);
}

}  // namespace tidemar
