#pragma once

#include <QIcon>
#include <string>

/// The pictures of the screens: the icon theme's where it has them, or else drawings of our own.
/// Main thread.
namespace tidemar::icons {

enum class Symbol { calendar, plus, minus, menu, warning };

/// One-coloured, in the colour of the palette's text at the moment of drawing.
QIcon symbol(Symbol symbol);

/// A folder's picture by its place; the folders of the user's home that have one get their own.
QIcon folder(const std::string& path);

/// The application's own.
QIcon application();

/// The ground that an icon stands on.
enum class Ground { unknown, light, dark };

/// The one beside the clock: one-coloured, for a panel of that ground; where that isn't known,
/// readable on light and dark ones.
QIcon menuBar(Ground ground = Ground::unknown);

}  // namespace tidemar::icons
