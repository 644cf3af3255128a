#include "TidemarUI/Views/QuietStyle.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QPainter>
#include <QPushButton>
#include <QStyleFactory>
#include <QStyleOption>
#include <algorithm>
#include <memory>

#include "TidemarUI/Views/ControlPainting.h"
#include "TidemarUI/Views/Icons.h"
#include "TidemarUI/Views/Style.h"

namespace tidemar {
namespace {

constexpr int controlHeight = 28;
constexpr int scrollBarExtent = 10;
constexpr int pickerPadding = 10;
constexpr int pickerArrowWidth = 26;

/// What a style makes of a button, a number field and a check box. Styles that wrap another have
/// names of their own; what they draw tells what they are.
QImage pictureOfControls(const QStyle& style) {
  QImage picture(120, 90, QImage::Format_ARGB32);
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  const auto prepare = [](QStyleOption& option, int top) {
    option.palette = QPalette(Qt::lightGray);
    option.state = QStyle::State_Enabled | QStyle::State_Raised;
    option.rect = QRect(0, top, 120, 30);
  };
  QStyleOptionButton button;
  prepare(button, 0);
  style.drawControl(QStyle::CE_PushButtonBevel, &button, &painter);
  QStyleOptionSpinBox field;
  prepare(field, 30);
  field.frame = true;
  field.subControls = QStyle::SC_All;
  style.drawComplexControl(QStyle::CC_SpinBox, &field, &painter);
  QStyleOptionButton box;
  prepare(box, 60);
  box.state |= QStyle::State_On;
  box.rect.setWidth(30);
  style.drawPrimitive(QStyle::PE_IndicatorCheckBox, &box, &painter);
  return picture;
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
      controls::drawButton(
          *painter, *option,
          button != nullptr && button->features & QStyleOptionButton::DefaultButton);
      break;
    }
    case PE_PanelButtonTool:
      if (option->state & (State_MouseOver | State_Sunken | State_On) &&
          option->state.testFlag(State_Enabled)) {
        controls::drawBox(*painter, option->rect, style::grid + 2,
                          option->state & (State_Sunken | State_On)
                              ? style::pressedFill(option->palette)
                              : style::highlightFill(option->palette),
                          Qt::transparent);
      }
      if (controls::hasKeyboardFocus(*option)) {
        controls::drawBox(*painter, option->rect, style::grid + 2, Qt::transparent,
                          style::accent(option->palette), 2);
      }
      break;
    case PE_IndicatorCheckBox:
      controls::drawCheckBox(*painter, *option);
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
        controls::drawNumberField(*painter, *spinBox, *this);
      break;
    case CC_ComboBox: {
      controls::drawButton(*painter, *option, false);
      const QRect arrow = subControlRect(CC_ComboBox, option, SC_ComboBoxArrow, widget);
      controls::drawChevron(*painter, QRectF(arrow).center(), 3.5, false,
                            style::secondaryText(option->palette));
      break;
    }
    case CC_ScrollBar:
      if (const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option))
        controls::drawScrollBar(*painter, *slider, *this);
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
      return controls::scrollBarRect(*slider, subControl);
  }
  if (control == CC_SpinBox) {
    if (const auto* spinBox = qstyleoption_cast<const QStyleOptionSpinBox*>(option))
      return controls::numberFieldRect(*spinBox, subControl);
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

void QuietStyle::polish(QPalette& palette) {
  QProxyStyle::polish(palette);
  palette.setColor(QPalette::Inactive, QPalette::Window,
                   palette.color(QPalette::Active, QPalette::Window));
}

int QuietStyle::pixelMetric(PixelMetric metric, const QStyleOption* option,
                            const QWidget* widget) const {
  switch (metric) {
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
      return style::scaled(4 * style::grid);
    case PM_CheckBoxLabelSpacing:
      return 10;
    case PM_MessageBoxIconSize:
      return style::scaled(12 * style::grid);
    case PM_ScrollBarExtent:
      return scrollBarExtent;
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
      return 0;
    default:
      return QProxyStyle::pixelMetric(metric, option, widget);
  }
}

QPalette quietPalette(bool isDark) {
  const QColor window = isDark ? QColor(0x25, 0x27, 0x2b) : QColor(0xf6, 0xf6, 0xf7);
  const QColor text = isDark ? QColor(0xec, 0xee, 0xf0) : QColor(0x1d, 0x1f, 0x22);
  QPalette palette(text, window, window.lighter(110), window.darker(130), window.darker(110), text,
                   text, isDark ? QColor(0x1e, 0x20, 0x23) : QColor(Qt::white), window);
  palette.setColor(QPalette::Highlight,
                   isDark ? QColor(0x5b, 0x9b, 0xff) : QColor(0x1f, 0x6f, 0xeb));
  palette.setColor(QPalette::HighlightedText,
                   isDark ? QColor(0x0d, 0x14, 0x20) : QColor(Qt::white));
  for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText}) {
    QColor faded = text;
    faded.setAlphaF(static_cast<float>(style::disabledOpacity));
    palette.setColor(QPalette::Disabled, role, faded);
  }
  palette.setColor(QPalette::ToolTipBase, window);
  palette.setColor(QPalette::ToolTipText, text);
  return palette;
}

void adoptColorScheme(ColorScheme scheme, const std::optional<QPalette>& desktops) {
  static const QPalette first = QApplication::palette();
  if (dynamic_cast<QuietStyle*>(QApplication::style()) == nullptr) return;
  const QPalette given = desktops.value_or(first);
  const bool isDark = scheme == ColorScheme::dark;
  const bool isGiven = scheme == ColorScheme::asGiven || isDark == style::isDark(given);
  QPalette palette = isGiven ? given : quietPalette(isDark);
  QApplication::style()->polish(palette);
  QApplication::setPalette(palette);
}

void adoptQuietStyle() {
  const std::unique_ptr<QStyle> fusion(QStyleFactory::create(QStringLiteral("fusion")));
  const QStyle* given = QApplication::style();
  if (fusion && pictureOfControls(*given) == pictureOfControls(*fusion))
    QApplication::setStyle(new QuietStyle);
}

}  // namespace tidemar
