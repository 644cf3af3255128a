#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>

/// The look that all screens share: a few sizes of type, one grid, and colours that follow from the
/// desktop's palette, so that light and dark both read well. Distances are in device-independent
/// pixels. Main thread.
namespace tidemar::style {

/// Every distance is a multiple of this.
inline constexpr int grid = 4;

inline constexpr int rowCorner = 8;
inline constexpr int cardCorner = 10;

/// How far a row's highlight reaches beyond its text, so that the texts of rows and of what stands
/// between them begin on one line.
inline constexpr int rowOutset = 10;

/// How far a check box stands in from the edge of its widget, for the ring of the focus.
inline constexpr int checkBoxRing = 4;

/// How much of something that can't be used is left to see.
inline constexpr double disabledOpacity = 0.42;

enum class TextSize { pageHeadline, folderName, sectionHeadline, body, secondary };

/// The desktop's font in a size relative to its own.
QFont font(TextSize size, QFont::Weight weight = QFont::Normal);

/// A length of the drawings, which are made for type of 10 points, grown with larger type: icons,
/// controls and columns then keep their measure to the text. Never less than it is.
int scaled(int length);

/// A colour so far on the way from one to another.
QColor mixed(const QColor& from, const QColor& to, double share);

QColor text(const QPalette& palette);
QColor secondaryText(const QPalette& palette);
QColor accent(const QPalette& palette);
QColor onAccent(const QPalette& palette);

/// For what can't be undone, and nothing else.
QColor warning(const QPalette& palette);

QColor windowFill(const QPalette& palette);
QColor sidebarFill(const QPalette& palette);
QColor cardFill(const QPalette& palette);
QColor fieldFill(const QPalette& palette);
QColor hairline(const QPalette& palette);

/// What a row lays over its ground under the pointer or the focus, and while it is pressed.
QColor highlightFill(const QPalette& palette);
QColor pressedFill(const QPalette& palette);

/// The ground of a switch that is off.
QColor switchFill(const QPalette& palette);

/// Whether the palette is one of light text on a dark ground.
bool isDark(const QPalette& palette);

}  // namespace tidemar::style
