#pragma once

#include <string_view>

class QWidget;

namespace tidemar {

/// Gives windows that are no dialogs the role of a window, and lists that of a list of rows, which
/// the toolkit leaves out, and hides pictures from assistive tools that say nothing. Call once,
/// before a window is shown.
void installAccessibleRoles();

/// Marks a picture that stands beside the words for what it shows.
void markAsDecoration(QWidget& picture);

/// Marks a column of widgets as a list of that name, or a list view whose rows that can't be chosen
/// are titles. Each widget that lies directly in the column is a row.
void markAsList(QWidget& list, std::string_view name);

}  // namespace tidemar
