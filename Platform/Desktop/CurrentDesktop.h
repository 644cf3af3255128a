#pragma once

#include <QString>
#include <QStringList>

/// The desktop of this session, as XDG_CURRENT_DESKTOP of the Desktop Entry specification names it.
/// Any thread.
namespace tidemar::CurrentDesktop {

/// The names, the most special one first; none outside of a desktop.
QStringList names();

/// Whether one of the names is this, in capitals or not.
bool is(const QString& name);

}  // namespace tidemar::CurrentDesktop
