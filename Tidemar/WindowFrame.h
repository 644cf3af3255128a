#pragma once

#include <QWidget>

#include "Platform/UserDefaults.h"

/// Where windows stand. Main thread.
namespace tidemar::WindowFrame {

/// Puts a window where the one of that name was last, if that is still on a screen. Answers whether
/// it was.
bool restore(QWidget& window, const UserDefaults& defaults);

/// Remembers where it stands under its object name. A failure is logged: there is nothing the user
/// could do.
void store(const QWidget& window, UserDefaults& defaults);

/// Puts a window in the middle of the screen with the pointer.
void center(QWidget& window);

}  // namespace tidemar::WindowFrame
