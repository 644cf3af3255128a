#pragma once

#include <QWidget>

#include "Platform/UserDefaults.h"

/// Where windows stand. Main thread.
namespace tidemar::WindowFrame {

/// Puts a window where the one of that name was last, or as near as it is whole on a screen that
/// there is. Answers false, and does nothing, where nothing of it is known.
bool restore(QWidget& window, const UserDefaults& defaults);

/// Remembers where it stands, on Wayland its size alone, under its object name. A failure is
/// logged: there is nothing the user could do.
void store(const QWidget& window, UserDefaults& defaults);

/// Puts a window in the middle of the screen with the pointer, and makes it fit there.
void center(QWidget& window);

/// Has the frames drawn anew that the toolkit draws itself, where a Wayland desktop leaves that to
/// programs: such a frame keeps the colours of the moment it was made in. Elsewhere does nothing.
void remakeDrawn();

}  // namespace tidemar::WindowFrame
