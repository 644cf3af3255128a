#pragma once

#include <QIcon>
#include <QPainter>
#include <QString>
#include <QWidget>

namespace tidemar {

/// What a row of a list or a menu says. Empty texts take no place.
struct RowContent {
  QIcon icon = {};
  int iconSize = 0;    ///< 0 for a row without an icon.
  QString title = {};  ///< Elided in the middle where it doesn't fit.
  bool isTitleStrong = false;
  QString trailing = {};  ///< At the far edge of the first line, never cut.
  QString detail = {};    ///< The second line, in small type; elided in the middle.

  /// All of it for a screen reader.
  QString spoken() const;
};

enum class RowHighlight { none, highlighted, pressed, selected };

struct RowLook {
  RowHighlight highlight = RowHighlight::none;
  bool hasFocusRing = false;
  int inset = 0;  ///< From the row's edges to its texts.
};

/// Draws a row from edge to edge of its rectangle, mirrored for languages written from right to
/// left.
void paintRow(QPainter& painter, const QRect& rect, const RowContent& content, const RowLook& look,
              const QWidget& widget);

/// How high a row has to be, and how wide it would like to be, its inset not counted.
QSize rowSize(const RowContent& content);

}  // namespace tidemar
