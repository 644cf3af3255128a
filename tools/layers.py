#!/usr/bin/env python3
"""Checks that the code depends downwards only: what each library links, and what each file includes.
Prints every line that doesn't and ends with 1 if there is one."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

# What a library may name on its link line.
LINKS = {
    "TidemarCore": {"ICU::uc"},
    "Platform": {"TidemarCore", "ICU::uc", "ICU::i18n", "PkgConfig::Systemd", "nlohmann_json::nlohmann_json"},
    "PlatformDesktop": {"Platform", "Qt6::Widgets", "Qt6::DBus", "Qt6::Concurrent", "QCoro::Core", "QCoro::DBus",
                        "PkgConfig::Xcb"},
    "TidemarKit": {"Platform", "SQLite::SQLite3", "nlohmann_json::nlohmann_json"},
    "TidemarUIState": {"TidemarKit"},
    "TidemarUIViews": {"TidemarUIState", "Qt6::Widgets"},
    "TidemarApp": {"TidemarUIViews", "PlatformDesktop"},
    "tidemar": {"TidemarApp"},
    "tidemar-make-temporary": {"Platform"},
}

# The layers, and inside Platform the rooms: a file belongs to the longest of these that its path begins with,
# and may include what belongs to the same one or to those named behind it.
GROUND = {"TidemarCore/", "Platform/"}
FILES = GROUND | {"Platform/Files/", "Platform/Files/Descriptors/", "Platform/Files/Places/",
                  "Platform/Files/Walk/", "Platform/Files/Trash/", "Platform/Files/Bookmarks/",
                  "Platform/Files/Changes/"}
PLATFORM = FILES | {"top of Platform/Files", "Platform/Locale/", "Platform/Extension/"}
KIT = PLATFORM | {"TidemarKit/"}
STATE = KIT | {"TidemarUI/State/"}
SEAM = {"TidemarCore/", "Platform/", "Platform/Files/"}  # the interfaces and values of Platform/Files
MAY_INCLUDE = {
    "TidemarCore/": set(),
    "Platform/": GROUND | {"Platform/Locale/", "Platform/Files/Descriptors/", "Platform/Files/Places/"},
    "Platform/Locale/": GROUND,
    "Platform/Files/": SEAM,
    "Platform/Files/Descriptors/": SEAM,
    "Platform/Files/Places/": SEAM | {"Platform/Files/Descriptors/"},
    "Platform/Files/Walk/": SEAM | {"Platform/Files/Descriptors/", "Platform/Files/Places/"},
    "Platform/Files/Trash/": SEAM | {"Platform/Files/Descriptors/", "Platform/Files/Places/", "Platform/Files/Walk/"},
    "Platform/Files/Bookmarks/": FILES - {"Platform/Files/Changes/"},
    "Platform/Files/Changes/": FILES - {"Platform/Files/Bookmarks/"},
    "top of Platform/Files": FILES,
    "Platform/Extension/": FILES,
    "Platform/Desktop/": PLATFORM,
    "TidemarKit/": PLATFORM,
    "TidemarUI/State/": KIT,
    "TidemarUI/Views/": STATE,
    "Tidemar/": STATE | {"TidemarUI/Views/", "Platform/Desktop/"},
}
# What makes the rooms one thing, on top of them. All else that lies loose in Platform/Files is their seam.
TOP = re.compile(r"Platform/Files/(DiskFolder|DiskFileManager)\.|Platform/Files/KnownFolders\.cpp")
QT = re.compile(r"#include <Q|#include <QCoro")
MAY_KNOW_QT = {"Platform/Desktop/", "TidemarUI/Views/", "Tidemar/"}


def place(path):
    if TOP.match(path):
        return "top of Platform/Files"
    return max((prefix for prefix in MAY_INCLUDE if path.startswith(prefix)), key=len, default=None)


def wrong_includes():
    for file in sorted(ROOT.glob("[TP]*/**/*.[ch]*")):
        path = str(file.relative_to(ROOT))
        own = place(path)
        if own is None or file.suffix not in (".h", ".cpp"):
            continue
        for number, line in enumerate(file.read_text().splitlines(), 1):
            if QT.match(line) and own not in MAY_KNOW_QT:
                yield f"{path}:{number}: no Qt here: {line}"
            included = re.match(r'#include "([^"]+)"', line)
            if not included or (there := place(included[1])) is None:
                continue
            if there != own and there not in MAY_INCLUDE[own]:
                yield f"{path}:{number}: {own} doesn't know {there}: {line}"


def wrong_links():
    seen = set()
    for file in ROOT.glob("[TP]*/CMakeLists.txt"):
        for target, names in re.findall(r"target_link_libraries\((\S+)([^)]*)\)", file.read_text()):
            seen.add(target)
            for name in sorted(set(names.split()) - {"PUBLIC", "PRIVATE"} - LINKS.get(target, set())):
                yield f"{file.relative_to(ROOT)}: {target} doesn't link {name}"
    for target in sorted(LINKS.keys() - seen):
        yield f"{target} has no link line"


found = [*wrong_links(), *wrong_includes()]
print(*found, sep="\n", end="\n" if found else "")
sys.exit(1 if found else 0)
