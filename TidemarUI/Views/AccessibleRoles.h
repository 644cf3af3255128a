#pragma once

class QWidget;

namespace tidemar {

/// Gives windows that are no dialogs the role of a window, which the toolkit leaves out, and hides
/// pictures from assistive tools that say nothing. Call once, before a window is shown.
void installAccessibleRoles();

/// Marks a picture that stands beside the words for what it shows.
void markAsDecoration(QWidget& picture);

}  // namespace tidemar
