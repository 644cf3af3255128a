#!/usr/bin/env python3
"""Shows what Tidemar does, on real files: a throw-away home, a folder of old and new things, and the
program started again 100 days later. Usage: tools/tour.py path/to/tidemar"""

import os
import subprocess
import sys
import time
import urllib.parse

from session import Session, link, shown, tags

DAYS = 100


def heading(text):
    print(f"\n{text}\n{'-' * len(text)}")


def make_sample(folder):
    os.makedirs(os.path.join(folder, b"build-logs", b"2026", b"july"))
    for name in [b"debian-12.iso", b"invoice.pdf", b".keep-me", b"a new\nline.txt", b"latin-\xe9t\xe9.doc",
                 b"build-logs/2026/july/output.log"]:
        with open(os.path.join(folder, name), "wb") as file:
            file.write(b"x" * 5000)
    os.symlink(b"debian-12.iso", os.path.join(folder, b"latest"))
    # These are new when the program looks 100 days from now.
    tomorrow = time.time() + (DAYS - 1) * 86400
    for name in [b"written-yesterday.txt", b"still-in-use"]:
        path = os.path.join(folder, name)
        if name == b"still-in-use":
            os.mkdir(path)
            path = os.path.join(path, b"draft.txt")
        with open(path, "wb") as file:
            file.write(b"x" * 100)
        os.utime(path, (tomorrow, tomorrow))


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


def start_desktop(session):
    """A window manager, and a panel in the corner whose only item is the program's icon."""
    configuration = os.path.join(session.root, "panel")
    with open(configuration, "w", encoding="ascii") as file:
        file.write(PANEL)
    for command in [["openbox"], ["tint2", "-c", configuration]]:
        session.processes.append(subprocess.Popen(command, env=session.environment,
                                                  stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL))


class Camera:
    """Takes pictures of the windows on a session's display."""

    def __init__(self, session, directory):
        self.session = session
        self.directory = directory
        os.makedirs(directory, exist_ok=True)

    def run(self, *command):
        return subprocess.run(command, env=self.session.environment, check=True, text=True, timeout=30,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout

    def take(self, name, title):
        window = self.run("xdotool", "search", "--sync", "--onlyvisible", "--name", f"^{title}$").split()[-1]
        time.sleep(0.5)  # until it is drawn: a display tells no one when a picture is finished
        self.run("import", "-window", window, os.path.join(self.directory, name + ".png"))

    def take_popover(self, name):
        before = set(self.visible_windows())
        icon = self.run("xdotool", "search", "--sync", "--onlyvisible", "--class", "tint2").split()[-1]
        self.run("xdotool", "mousemove", "--window", icon, "--sync", "16", "16", "click", "1")
        popover = self.session.wait_for(lambda: set(self.visible_windows()) - before, "the popover is open").pop()
        time.sleep(0.5)
        self.run("import", "-window", popover, os.path.join(self.directory, name + ".png"))

    def visible_windows(self):
        return self.run("xdotool", "search", "--onlyvisible", "--class", "tidemar").split()


def take_pictures(session, folder, directory):
    camera = Camera(session, directory)
    session.call("Activate", "{}")
    camera.take("overview", "Tidemar")
    session.call("Open", str([link(folder)]), "{}")
    camera.take("folder", "Tidemar")
    for action, title in [("settings", "Tidemar Settings"), ("setup", "Set Up Tidemar")]:
        session.call("ActivateAction", action, "@av []", "{}")
        camera.take(action, title)
    camera.take_popover("popover")


def main():
    with Session(sys.argv[1]) as session:
        start_desktop(session)
        folder = os.path.join(os.fsencode(session.home), b"Downloads")
        make_sample(folder)
        os.setxattr(folder, "user.xdg.tags", b"Work,Red")

        heading("Today: the folder before")
        print_folder(folder)

        program = session.start(link(folder))
        session.wait_for(lambda: b"Tidemar: Temporary" in tags(folder), "the folder is Temporary")
        session.stop(program)
        made = session.last_run(folder)
        heading("Made Temporary by " + link(folder).replace(session.home, "/home/me"))
        print("  tags: " + ", ".join(tag.decode() for tag in tags(folder)))

        program = session.start(days_ahead=DAYS)
        performed = session.wait_for_run(folder, made)
        heading(f"{DAYS} days later ({performed.decode()} UTC): the folder after")
        print_folder(folder)
        heading("The journal")
        rows = print_journal(session)
        heading("The Trash")
        print_trash(session)

        identifier, name = rows[0][0], rows[0][1]
        session.call("ActivateAction", "put-back", f"[<int64 {identifier}>]", "{}")
        session.wait_for(lambda: session.rows("SELECT 1 FROM journalEntry WHERE id = ? AND undoneAt IS NOT NULL",
                                              identifier), "the item is back")
        heading(f"{shown(name)} put back")
        print_folder(folder)

        pictures = os.path.abspath(os.path.join(os.path.dirname(sys.argv[1]), "..", "pictures"))
        take_pictures(session, folder, pictures)
        print(f"\nPictures of the screens: {os.path.relpath(pictures)}")
        status = session.stop(program)
        print(f"\nTidemar ended with status {status}.")
        return status


if __name__ == "__main__":
    sys.exit(main())
