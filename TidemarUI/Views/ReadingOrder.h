#pragma once

#include <QWidget>

namespace tidemar {

/// Makes the tab key go through a screen's controls in the order in which they are read. Call it
/// after controls came or moved.
void restoreReadingOrder(QWidget& screen);

}  // namespace tidemar
