#!/usr/bin/env python3
"""Shows what Tidemar does, on real files: a throw-away home, four folders with rules of their own, and the
program started again 99 and 100 days later. Usage: tools/tour.py path/to/tidemar"""

import contextlib
import os
import signal
import sqlite3
import subprocess
import sys
import time
import urllib.parse

from session import Session, link, shown, tags

DAY = 86400
DAYS = 100
MEGABYTE = 1_000_000

# Each folder with what its rules have other than a new one's, and its items: the MB of each and the day on which
# its age is over, counted from the last look. Names that end in a slash are folders.
FOLDERS = {
    b"Downloads": ({}, {
        b"debian-12.iso": (31, -0.4), b"invoice.pdf": (1, -0.4), b"a new\nline.txt": (1, -0.3),
        b"latin-\xe9t\xe9.doc": (1, -0.3), b"build-logs/2026/july/": (4, -0.2), b".keep-me": (1, -50),
        b"tickets.pdf": (2, 0.9), b"holiday-photos.zip": (38, 3), b"slides.odp": (6, 3.1), b"thesis-draft.odt": (2, 60),
        b"written-yesterday.txt": (1, 89), b"still-in-use/": (1, 89)}),
    b"Pictures/Screenshots": ({"maxAgeDays": 30}, {
        b"Login page.png": (1, -1.9), b"Error dialog.png": (2, -1.8), b"Map.png": (2, -1.7),
        b"Old layout.png": (2, 0.8), b"New layout.png": (3, 0.9), b"Receipt.png": (1, 20)}),
    b"Render cache": ({"maxAgeDays": 7, "sizeLimit": 20_000 * MEGABYTE, "disposal": "delete"}, {
        **{b"frame-%03d.exr" % number: (2, -0.5) for number in range(1, 13)},
        **{b"frame-%03d.exr" % number: (2, 2) for number in range(13, 31)}}),
    b"Scratch": ({"maxAgeDays": None, "emptyOnRestart": True, "disposal": "delete"}, {
        b"build/": (17, 0), b"core.4711": (21, 0), b"try.py": (1, 0)}),
}


def heading(text):
    print(f"\n{text}\n{'-' * len(text)}")


def place(path, megabytes, changed):
    """Makes a file of that size and date, in as many folders as the path names."""
    os.makedirs(os.path.dirname(path), exist_ok=True)
    if path.endswith(b"/"):
        path += b"output.log"
    with open(path, "wb") as file:
        os.posix_fallocate(file.fileno(), 0, megabytes * MEGABYTE)
    os.utime(path, (changed, changed))


def make_sample(home):
    end = time.time() + DAYS * DAY
    for folder, (rules, items) in FOLDERS.items():
        age = rules.get("maxAgeDays", 90) or 0
        for name, (megabytes, goes) in items.items():
            place(os.path.join(home, folder, name), megabytes, end + (goes - age) * DAY)
    latest = os.path.join(home, b"Downloads", b"latest")
    os.symlink(b"debian-12.iso", latest)
    os.utime(latest, (end - 91 * DAY + DAY / 2,) * 2, follow_symlinks=False)


def set_rules(session):
    """What a user sets on the folders' pages; the program isn't running."""
    with contextlib.closing(sqlite3.connect(session.database)) as database, database:
        for folder, (rules, _) in FOLDERS.items():
            for rule, value in rules.items():
                database.execute(f"UPDATE folder SET {rule} = ? WHERE path = ?",
                                 (value, os.path.join(session.home, os.fsdecode(folder))))


def print_folder(folder):
    for entry in sorted(os.scandir(folder), key=lambda entry: entry.name):
        print("  " + shown(entry.name) + ("/" if entry.is_dir(follow_symlinks=False) else ""))


def print_journal(session):
    rows = session.rows("SELECT id, name, reasons, disposal, performedAt, undoneAt FROM journalEntry ORDER BY id")
    for identifier, name, reasons, disposal, performed, undone in rows:
        line = f"  {identifier}  {shown(name):28} {reasons.decode():9} {disposal.decode()}  {performed.decode()}"
        print(line + (f"  put back {undone.decode()}" if undone else ""))
    return rows


def print_trash(session):
    files = os.path.join(session.trash, "files")
    info = os.path.join(session.trash, "info")
    for name in sorted(os.listdir(os.fsencode(files))):
        with open(os.path.join(os.fsencode(info), name + b".trashinfo"), encoding="ascii") as file:
            record = dict(line.strip().split("=", 1) for line in file if "=" in line)
        path = os.fsdecode(urllib.parse.unquote_to_bytes(record["Path"])).replace(session.home, "~")
        print(f"  {shown(name):28} from {shown(path)}")


PANEL = """
panel_items = S
panel_position = top right horizontal
panel_size = 32 32
panel_monitor = all
systray_icon_size = 22
systray_padding = 4 4 4
"""
FONTS = """<fontconfig><match><edit name="family" mode="prepend" binding="strong"><string>Inter</string></edit></match>
</fontconfig>
"""
WINDOWS = """<openbox_config xmlns="http://openbox.org/3.4/rc"><theme><name>Tour</name><titleLayout>L</titleLayout>
<font place="ActiveWindow"><name>Inter</name><size>18</size><weight>bold</weight></font></theme></openbox_config>
"""
FRAME = """
border.width: 2
padding.width: 16
padding.height: 10
window.client.padding.width: 0
window.client.padding.height: 0
window.handle.width: 0
window.active.border.color: #{edge}
window.active.client.color: #{ground}
window.active.title.bg: flat solid
window.active.title.bg.color: #{ground}
window.active.title.separator.color: #{edge}
window.active.label.bg: parentrelative
window.active.label.text.color: #{ink}
window.label.text.justify: center
"""
LIGHT = {"ground": "f6f6f7", "base": "ffffff", "ink": "1d1f22", "accent": "1f6feb", "on": "ffffff", "edge": "c9cacd"}
DARK = {"ground": "25272b", "base": "1e2023", "ink": "eceef0", "accent": "5b9bff", "on": "0d1420", "edge": "45484e"}


def write(*path, text):
    os.makedirs(os.path.join(*path[:-1]), exist_ok=True)
    with open(os.path.join(*path), "w", encoding="ascii") as file:
        file.write(text)


class Desktop:
    """A window manager, a panel in the corner whose only item is the program's icon, and colours that change. All is
    drawn twice as large, so that pictures are sharp on any screen."""

    def __init__(self, session):
        self.session = session
        session.environment.update(QT_SCALE_FACTOR="2", QT_FONT_DPI="104", XDG_CURRENT_DESKTOP="KDE")
        self.settings = os.path.join(session.home, ".config")
        write(self.settings, "fontconfig", "fonts.conf", text=FONTS)
        write(self.settings, "openbox", "rc.xml", text=WINDOWS)
        write(session.root, "panel", text=PANEL)
        self.write_colors(LIGHT)
        self.window_manager = self.start("openbox")
        self.start("tint2", "-c", os.path.join(session.root, "panel"))

    def start(self, *command):
        process = subprocess.Popen(command, env=self.session.environment,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.session.processes.append(process)
        return process

    def write_colors(self, colors):
        write(self.session.home, ".themes", "Tour", "openbox-3", "themerc", text=FRAME.format(**colors))
        groups = {"Window": ("ground", "ink"), "Button": ("ground", "ink"), "View": ("base", "ink"),
                  "Tooltip": ("ground", "ink"), "Selection": ("accent", "on")}
        numbers = {role: ",".join(str(part) for part in bytes.fromhex(color)) for role, color in colors.items()}
        write(self.settings, "kdeglobals", text="".join(
            f"[Colors:{group}]\nBackgroundNormal={numbers[ground]}\nForegroundNormal={numbers[ink]}\n"
            for group, (ground, ink) in groups.items()))

    def wear(self, colors):
        """Changes the colours of all that is on the screen."""
        self.write_colors(colors)
        self.window_manager.send_signal(signal.SIGUSR2)
        subprocess.run(["gdbus", "emit", "--session", "--object-path", "/KGlobalSettings",
                        "--signal", "org.kde.KGlobalSettings.notifyChange", "0", "0"],
                       env=self.session.environment, check=True)


class Camera:
    """Takes pictures of the windows on a session's display, in light and dark."""

    def __init__(self, desktop, directory):
        self.session = desktop.session
        self.desktop = desktop
        self.directory = directory
        os.makedirs(directory, exist_ok=True)

    def run(self, *command):
        return subprocess.run(command, env=self.session.environment, check=True, text=True, timeout=30,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout

    def take(self, name, title):
        self.picture(name, self.run("xdotool", "search", "--sync", "--onlyvisible", "--name", f"^{title}$").split()[-1])

    def picture(self, name, window):
        for colors, ending in [(LIGHT, ".png"), (DARK, "-dark.png")]:
            self.desktop.wear(colors)
            time.sleep(0.5)  # until it is drawn: a display tells no one when a picture is finished
            self.run("import", "-frame", "-window", window, os.path.join(self.directory, name + ending))

    def take_popover(self, name):
        before = set(self.visible_windows())
        icon = self.run("xdotool", "search", "--sync", "--onlyvisible", "--class", "tint2").split()[-1]
        self.run("xdotool", "mousemove", "--window", icon, "--sync", "16", "16", "click", "1")
        self.picture(name, self.session.wait_for(lambda: set(self.visible_windows()) - before,
                                                 "the popover is open").pop())

    def visible_windows(self):
        return self.run("xdotool", "search", "--onlyvisible", "--class", "tidemar").split()


def take_pictures(desktop, folder, directory):
    session = desktop.session
    camera = Camera(desktop, directory)
    camera.run("xdotool", "mousemove", "0", "9999")  # away from what lights up under it
    session.call("Activate", "{}")
    camera.take("overview", "Tidemar")
    session.call("Open", str([link(folder)]), "{}")
    camera.take("folder", "Tidemar")
    for action, title in [("settings", "Tidemar Settings"), ("setup", "Set Up Tidemar")]:
        session.call("ActivateAction", action, "@av []", "{}")
        camera.take(action, title)
    camera.take_popover("popover")


def main():
    with Session(sys.argv[1], screen="2000x2000x24") as session:
        desktop = Desktop(session)
        home = os.fsencode(session.home)
        make_sample(home)
        folders = [os.path.join(home, folder) for folder in FOLDERS]
        downloads = folders[0]
        os.setxattr(downloads, "user.xdg.tags", b"Work,Red")

        heading("Today: Downloads before")
        print_folder(downloads)

        program = session.start(link(downloads))
        session.call("Open", str([link(folder) for folder in folders[1:]]), "{}")
        session.wait_for(lambda: all(b"Tidemar: Temporary" in tags(folder) for folder in folders),
                         "the folders are Temporary")
        session.stop(program)
        made = max(map(session.last_run, folders))
        set_rules(session)
        heading("Made Temporary")
        for folder in folders:
            print("  " + link(folder).replace(session.home, "/home/me") + ": " + b", ".join(tags(folder)).decode())

        program = session.start(days_ahead=DAYS - 1)
        eve = max(session.wait_for_run(folder, made) for folder in folders)
        session.stop(program)
        program = session.start(days_ahead=DAYS)
        performed = max(session.wait_for_run(folder, eve) for folder in folders)
        heading(f"{DAYS} days later ({performed.decode()} UTC): Downloads after")
        print_folder(downloads)
        heading("The journal")
        rows = print_journal(session)
        heading("The Trash")
        print_trash(session)

        identifier, name = next(row[:2] for row in rows if row[1] == b"debian-12.iso")
        session.call("ActivateAction", "put-back", f"[<int64 {identifier}>]", "{}")
        session.wait_for(lambda: session.rows("SELECT 1 FROM journalEntry WHERE id = ? AND undoneAt IS NOT NULL",
                                              identifier), "the item is back")
        heading(f"{shown(name)} put back")
        print_folder(downloads)

        # Whatever is written now is as old to the program as its clock is ahead.
        later = time.time() + DAYS * DAY
        os.utime(os.path.join(downloads, name), (later, later))
        for late in [b"old-slides.odp", b"backup-of-phone.tar"]:
            place(os.path.join(downloads, late), 12, time.time())
        pictures = os.path.abspath(os.path.join(os.path.dirname(sys.argv[1]), "..", "pictures"))
        take_pictures(desktop, downloads, pictures)
        print(f"\nPictures of the screens: {os.path.relpath(pictures)}")
        status = session.stop(program)
        print(f"\nTidemar ended with status {status}.")
        return status


if __name__ == "__main__":
    sys.exit(main())
