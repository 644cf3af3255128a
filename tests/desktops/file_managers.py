#!/usr/bin/python3
"""The command in the real menus of the real file managers, where they are installed: switches it on, opens the
menu of a folder with an odd name, takes a picture and chooses it. Not one of ./test's: it wants all of them on a
machine. Needs the system's own Python, which has the accessibility bindings, xdotool and ImageMagick.
Usage: file_managers.py path/to/tidemar directory-for-pictures [name of a file manager ...]"""

import contextlib
import os
import shutil
import subprocess
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "program"))
import accessible  # noqa: E402
from accessible import Atspi  # noqa: E402
from session import TAG, Session, tags  # noqa: E402

COMMAND = "Tidemar: Make Temporary…"
ODD_NAME = "it's 100% “odd” $HOME `id` a;b #1".encode()

# The program, the name that its entry goes by, the names of the menus that lead to the command, and the keys that
# choose it where the menu isn't on the accessibility bus.
FILE_MANAGERS = {
    "dolphin": ("Dolphin", [], ["Up", "Up", "Return"]),
    "nautilus": ("Files (Nautilus)", [], ["Down", "Right", "Down", "Return"]),
    "nemo": ("Nemo", [], []),
    "caja": ("Caja", ["Scripts"], []),
    "thunar": ("Thunar", [], []),
    "pcmanfm-qt": ("PCManFM and PCManFM-Qt", [], ["Up", "Up", "Up", "Return"]),
    "pcmanfm": ("PCManFM and PCManFM-Qt", [], []),
}


class Trial:
    def __init__(self, session, pictures):
        self.session = session
        self.pictures = pictures
        self.binaries = os.path.dirname(session.program)
        # As where a package put it: PCManFM finds a program by its name alone.
        session.environment["PATH"] = self.binaries + ":" + session.environment["PATH"]

    def run(self, *command):
        return subprocess.run(command, env=self.session.environment, check=True, text=True, timeout=60,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout

    def spawn(self, *command):
        process = subprocess.Popen(command, env=self.session.environment, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        self.session.processes.append(process)
        return process

    def press(self, name):
        """With the pointer, as a person does: what a program calls a press differs too much."""
        place = accessible.find(self.session, "menu", name).get_extents(Atspi.CoordType.SCREEN)
        self.run("xdotool", "mousemove", str(place.x + place.width // 2), str(place.y + place.height // 2),
                 "click", "1")
        time.sleep(1)

    def open_menu(self, patience):
        """The menu of the one folder that is shown; a file manager tells no one when it has read it."""
        time.sleep(patience)
        window = self.run("xdotool", "getactivewindow").strip()
        self.run("xdotool", "windowsize", "--sync", window, "900", "600", "mousemove", "--window", window, "600", "450",
                 "click", "1")
        self.run("xdotool", "key", "ctrl+a")
        time.sleep(1)
        self.run("xdotool", "key", "Menu")
        time.sleep(2)

    def choose(self, program, menus, keys, patience):
        self.open_menu(patience)
        for menu in menus:
            self.press(menu)
        self.run("import", "-window", "root", os.path.join(self.pictures, program + ".png"))
        if keys:
            self.run("xdotool", "key", "--delay", "1000", *keys)
        else:
            self.press(COMMAND)

    def try_out(self, program):
        name, menus, keys = FILE_MANAGERS[program]
        parent = os.path.join(os.fsencode(self.session.home), b"of " + program.encode())
        folder = os.path.join(parent, ODD_NAME)
        os.makedirs(folder)
        self.run(os.path.join(self.binaries, "menuEntries"), "install", name,
                 os.path.join(self.binaries, "tidemar-make-temporary"))
        process = self.spawn(program, os.fsdecode(parent))
        try:
            self.choose(program, menus, keys, 40 if program == "nautilus" else 6)
            with contextlib.suppress(TimeoutError):
                self.session.wait_for(lambda: TAG in tags(folder), f"{program} made the folder Temporary", 20)
                return "works"
            # A file manager that is still busy loses keys.
            self.run("xdotool", "key", "--delay", "300", "Escape", "Escape")
            self.choose(program, menus, keys, 20)
            self.session.wait_for(lambda: TAG in tags(folder), f"{program} made the folder Temporary", 20)
            return "works, chosen twice"
        except (TimeoutError, subprocess.SubprocessError) as error:
            self.run("import", "-window", "root", os.path.join(self.pictures, program + "-failed.png"))
            return f"FAILED: {error}"
        finally:
            process.terminate()
            self.run(os.path.join(self.binaries, "menuEntries"), "uninstall", name,
                     os.path.join(self.binaries, "tidemar-make-temporary"))


def main():
    program, pictures, *wanted = sys.argv[1:]
    os.makedirs(pictures, exist_ok=True)
    hasFailed = False
    for manager in wanted or FILE_MANAGERS:
        if not shutil.which(manager):
            print(f"{manager}: not installed")
            continue
        # The bindings know one accessibility bus in a process's life.
        if len(wanted) != 1:
            hasFailed |= subprocess.run([sys.executable, __file__, program, pictures, manager]).returncode != 0
            continue
        with Session(program) as session:
            session.environment.update(GTK_MODULES="gail:atk-bridge", NO_AT_BRIDGE="0")
            accessible.start(session)
            trial = Trial(session, pictures)
            session.start("--launched-at-login", stderr=subprocess.DEVNULL)
            time.sleep(2)
            result = trial.try_out(manager)
            print(f"{manager}: {result}", flush=True)
            hasFailed |= not result.startswith("works")
    return hasFailed


if __name__ == "__main__":
    sys.exit(main())
