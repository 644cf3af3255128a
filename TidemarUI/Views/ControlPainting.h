#pragma once

#include <QStyle>
#include <QStyleOption>

/// How the single controls are drawn, and where their parts stand. What is disabled is drawn like
/// what isn't: the caller fades it.
namespace tidemar::controls {

/// Whether a control has the focus and shows it, since it came by the keyboard.
bool hasKeyboardFocus(const QStyleOption& option);

void drawBox(QPainter& painter, const QRect& rect, double corner, const QColor& fill,
             const QColor& border, double borderWidth = 1);

/// The ground of whatever can be pressed or opened.
void drawButton(QPainter& painter, const QStyleOption& option, bool isDefault);

/// An arrow head of twice `size` in width at 10 points, pointing up or down.
void drawChevron(QPainter& painter, const QPointF& center, double size, bool isUp,
                 const QColor& color);

void drawCheckBox(QPainter& painter, const QStyleOption& option);

/// Draws all but the number. `style` tells where the steppers are.
void drawNumberField(QPainter& painter, const QStyleOptionSpinBox& option, const QStyle& style);

/// Draws the slider alone, and only where there is something to scroll.
void drawScrollBar(QPainter& painter, const QStyleOptionSlider& option, const QStyle& style);

QRect scrollBarRect(const QStyleOptionSlider& option, QStyle::SubControl control);
QRect numberFieldRect(const QStyleOptionSpinBox& option, QStyle::SubControl control);

}  // namespace tidemar::controls
