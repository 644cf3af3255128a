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

/// The one beside the clock: one-coloured and readable on light and dark panels.
QIcon menuBar();

}  // namespace tidemar::icons
