#pragma once

#include <string>
#include <string_view>

#include "Platform/Desktop/LoginItem.h"
#include "TidemarCore/FileURL.h"

/// The text of an autostart entry, by the freedesktop Desktop Entry and Desktop Application
/// Autostart specifications.
namespace tidemar::AutostartEntry {

/// The argument that tells a program that it was started by its entry, at login.
constexpr std::string_view loginArgument = "--launched-at-login";

/// The entry that starts the program at this path with the argument above. Throws `PlatformError`
/// for a path that desktops can't start from an entry: one that isn't absolute, holds an equals or
/// percent sign, or isn't UTF-8.
std::string text(const FileURL& program);

/// What a desktop makes of an entry: off where it starts nothing; requires approval where one of
/// the desktops' own settings has switched it off. Text that is no entry is off.
LoginItem::Status status(std::string_view text);

/// Whether an entry is switched off in a way that some desktops show nowhere.
bool isHidden(std::string_view text);

}  // namespace tidemar::AutostartEntry
