#pragma once

class QWidget;

/// The desktop's list of windows. Main thread.
namespace tidemar::TaskBar {

/// Keeps a window out of it; call it each time before the window is shown. Has an effect on X11
/// alone.
void leaveOut(QWidget& window);

}  // namespace tidemar::TaskBar
