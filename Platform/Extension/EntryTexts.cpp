#include "Platform/Extension/EntryTexts.h"

#include "Platform/Extension/Quoting.h"

namespace tidemar {
namespace {

const std::string ownershipComment =
    std::string(ownershipMark) +
    ", which takes this file away again when its command is switched off.\n";

void replaceAll(std::string& text, std::string_view placeholder, std::string_view value) {
  for (std::size_t at = text.find(placeholder); at != std::string::npos;
       at = text.find(placeholder, at + value.size()))
    text.replace(at, placeholder.size(), value);
}

// The suite is read at each opening of the menu: it is small, and always up to date. A list that
// can't be read hides nothing, since the command does no harm on a Temporary folder.
constexpr const char* pythonExtension = R"python(import json
import os
import subprocess
from urllib.parse import unquote_to_bytes

from gi.repository import GObject, @MODULE@

HELPER = @HELPER@
SUITE = b"7QRTM42ZLB.app.quernly.tidemar.json"


def temporary_paths():
    directory = os.environb.get(b"XDG_CONFIG_HOME", b"")
    if not directory.startswith(b"/"):
        directory = os.path.expanduser(b"~/.config")
    try:
        with open(os.path.join(directory, SUITE), encoding="utf-8") as suite:
            return {path.encode() for path in json.load(suite)["temporaryFolderPaths"]}
    except (OSError, ValueError, KeyError, TypeError, AttributeError):
        return set()


def is_local_folder(item):
    return item.is_directory() and item.get_uri().startswith("file:///")


def paths_of(uri):
    path = unquote_to_bytes(uri[len("file://"):])
    return {path, os.path.realpath(path)}


class TidemarMakeTemporary(GObject.GObject, @MODULE@.MenuProvider):
    def get_file_items(self, *arguments):
        selection = arguments[-1]  # some versions give the window first
        if not os.access(HELPER, os.X_OK):
            return []
        if not all(is_local_folder(item) for item in selection):
            return []
        temporary = temporary_paths()
        uris = [item.get_uri() for item in selection if temporary.isdisjoint(paths_of(item.get_uri()))]
        if not uris:
            return []
        entry = @MODULE@.MenuItem(name="Tidemar::MakeTemporary", label="@LABEL@", icon="@ICON@")
        entry.connect("activate", lambda *_: subprocess.Popen([HELPER, *uris]))
        return [entry]
)python";

}  // namespace

std::string dolphinServiceMenuText(const FileURL& helper) {
  return ownershipComment +
         "[Desktop Entry]\n"
         "Type=Service\n"
         "MimeType=inode/directory;\n"
         "Actions=makeTemporary;\n"
         "X-KDE-Protocols=file\n"
         "X-KDE-Priority=TopLevel\n"
         "TryExec=" +
         keyFileEscaped(helper.path()) +
         "\n\n"
         "[Desktop Action makeTemporary]\n"
         "Name=" +
         menuCommandName + "\nIcon=" + iconName + "\nExec=" + desktopExecQuoted(helper.path()) +
         " %U\n";
}

std::string nemoActionText(const FileURL& helper) {
  return ownershipComment + "[Nemo Action]\nName=" + menuCommandName + "\nIcon-Name=" + iconName +
         "\nExec=" + keyFileEscaped(percentDoubled(shellQuoted(helper.path()))) +
         " %U\n"
         // A URI may hold an apostrophe, but never what is special between double quotes.
         "Quote=double\n"
         "Dependencies=" +
         keyFileEscaped(helper.path()) +
         ";\n"
         "Selection=notnone\n"
         "Extensions=dir;\n";
}

std::string fileManagerActionText(const FileURL& helper, const std::string& tried) {
  return ownershipComment + "[Desktop Entry]\nType=Action\nName=" + menuCommandName +
         "\nIcon=" + iconName +
         "\nProfiles=makeTemporary;\n\n"
         "[X-Action-Profile makeTemporary]\n"
         "MimeTypes=inode/directory;\n"
         // Only what has a path: a condition on the scheme makes PCManFM crash.
         "Folders=/*;\n"
         "TryExec=" +
         keyFileEscaped(tried) +
         // Paths: they are quoted there, URIs aren't.
         "\nExec=" + keyFileEscaped(percentDoubled(shellQuoted(helper.path()))) + " %F\n";
}

std::string scriptText(std::string_view prefix, const FileURL& helper) {
  return "#!/bin/sh\n" + ownershipComment +
         "# The selection comes as URIs, one a line: no name can break a line in two.\n"
         "[ -x " +
         shellQuoted(helper.path()) +
         " ] || exit 0\n"
         "set -f\n"
         "IFS='\n'\n"
         "exec " +
         shellQuoted(helper.path()) + " $" + std::string(prefix) + "_SCRIPT_SELECTED_URIS\n";
}

std::string pythonExtensionText(std::string_view module, const FileURL& helper) {
  std::string text = pythonExtension;
  replaceAll(text, "@MODULE@", module);
  replaceAll(text, "@LABEL@", menuCommandName);
  replaceAll(text, "@ICON@", iconName);
  replaceAll(text, "@HELPER@", pythonBytes(helper.path()));
  return ownershipComment + text;
}

std::string thunarCommand(const FileURL& helper) {
  return percentDoubled(shellQuoted(helper.path())) + " %F";
}

}  // namespace tidemar
