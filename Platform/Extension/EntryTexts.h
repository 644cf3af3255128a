#pragma once

#include <string>
#include <string_view>

#include "TidemarCore/FileURL.h"

/// What the file managers read. `helper` is the program that the command runs.
namespace tidemar {

inline constexpr const char* menuCommandName = "Tidemar: Make Temporary…";

inline constexpr const char* iconName = "app.quernly.tidemar";

/// Begins the comment that every file of Tidemar's has had and has to have.
inline constexpr std::string_view ownershipMark = "# Written by Tidemar";

/// A service menu of Dolphin's.
std::string dolphinServiceMenuText(const FileURL& helper);

/// An action of Nemo's.
std::string nemoActionText(const FileURL& helper);

/// An action by the desktop-neutral specification of such files, which PCManFM and PCManFM-Qt read.
/// It is offered while there is a program `tried`, a name or a path.
std::string fileManagerActionText(const FileURL& helper, const std::string& tried);

/// A script for the submenu "Scripts"; `prefix` is the file manager's own for the variable with the
/// selection. Offered on files too: the program refuses them with a sentence.
std::string scriptText(std::string_view prefix, const FileURL& helper);

/// An extension in Python; `module` is the file manager's name in the introspection repository.
/// Offered on folders alone, and not where all of them are Temporary by the shared list.
std::string pythonExtensionText(std::string_view module, const FileURL& helper);

/// The command line of a custom action of Thunar's, before XML's escapes.
std::string thunarCommand(const FileURL& helper);

}  // namespace tidemar
