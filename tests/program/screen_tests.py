#!/usr/bin/python3
"""The screens used from outside, by the names that a screen reader speaks. Needs the system's own Python,
which has the accessibility bindings. Usage: screen_tests.py path/to/tidemar [unittest's arguments]"""

import os
import subprocess
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "tools"))
from session import TAG, Session, descendants, link, tags  # noqa: E402

import gi  # noqa: E402

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

PROGRAM = sys.argv.pop(1)
SESSION = None


def setUpModule():
    """One session serves all tests: the bindings connect to one accessibility bus in a process's life."""
    global SESSION
    SESSION = Session(PROGRAM)
    unittest.addModuleCleanup(SESSION.__exit__)
    SESSION.__enter__()
    SESSION.environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
    for command in [["openbox"], ["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"]]:
        SESSION.processes.append(subprocess.Popen(command, env=SESSION.environment, stderr=subprocess.DEVNULL))
    for name in ["DBUS_SESSION_BUS_ADDRESS", "DISPLAY", "XDG_RUNTIME_DIR"]:
        os.environ[name] = SESSION.environment[name]
    SESSION.wait_for(lambda: Atspi.init() in (0, 1), "the accessibility bus is there")


class ScreenTest(unittest.TestCase):
    def setUp(self):
        self.folder = os.path.join(os.fsencode(SESSION.home), self.id().encode()[-20:])
        os.mkdir(self.folder)
        with open(os.path.join(self.folder, b"item"), "wb"):
            pass

    def start(self, *arguments):
        program = SESSION.start(*arguments)
        self.addCleanup(lambda: program.poll() is None and SESSION.stop(program))

    def wait_for(self, question, what):
        """As the session does; what vanishes while it is looked at is no answer."""
        def careful():
            try:
                return question()
            except GLib.Error:
                return None
        return SESSION.wait_for(careful, what, 20)

    def look(self, role, name, *states, lacking=()):
        """The control of this role and name that is on the screen now and has these states, if there is one."""
        for node in descendants(Atspi.get_desktop(0)):
            if node.get_role_name() == role and node.get_name().startswith(name):
                has = node.get_state_set().contains
                if all(map(has, (Atspi.StateType.SHOWING, *states))) and not any(map(has, lacking)):
                    return node
        return None

    def find(self, role, name, *states, lacking=()):
        return self.wait_for(lambda: self.look(role, name, *states, lacking=lacking), f"there is a {role} “{name}”")

    def is_added(self):
        """Presses Return as long as the panel is there: while it offers completions the key only takes one."""
        if self.look("text", "Directory:", Atspi.StateType.FOCUSED):
            self.type_keys("Return")
        return SESSION.rows("SELECT 1 FROM folder WHERE path = ?", os.fsdecode(self.folder))

    def find_unchecked(self, name):
        # That none is found which is checked says nothing: a page is looked at while it changes.
        return self.find("check box", name, lacking=[Atspi.StateType.CHECKED])

    def press(self, role, name):
        try:
            self.find(role, name).do_action(0)
        except GLib.Error:
            pass  # a modal window keeps the answer back until it closes

    def type_keys(self, *keys):
        subprocess.run(["xdotool", "key", *keys], env=SESSION.environment, check=True)

    def choose_delete(self):
        """Chooses it in the picker and waits for the question. An earlier question goes a moment after its
        button was pressed, and takes the keyboard until then; the list's items are there even while it is closed."""
        question = ("label", "Delete cleared items permanently?")
        self.wait_for(lambda: not self.look(*question), "the question is gone")
        self.find("frame", "Tidemar", Atspi.StateType.ACTIVE)
        self.press("combo box", "Move to Bin")
        self.find("combo box", "Move to Bin", Atspi.StateType.EXPANDED)
        self.type_keys("Down", "Return")
        self.find(*question)

    def rule(self, column):
        return SESSION.rows(f"SELECT {column} FROM folder WHERE path = ?", os.fsdecode(self.folder))[0][0]

    def wait_for_rule(self, column, value):
        self.wait_for(lambda: self.rule(column) == value, f"{column} is {value}")

    def set_number(self, name, number):
        """Types a number as a user does, once its rule is seen to be on, and leaves the field."""
        self.find("spin button", name, Atspi.StateType.ENABLED).grab_focus()
        self.find("spin button", name, Atspi.StateType.FOCUSED)
        self.type_keys("ctrl+a")
        subprocess.run(["xdotool", "type", str(number)], env=SESSION.environment, check=True)
        self.type_keys("Return")


class TheFolderPage(ScreenTest):
    def test_rules_are_set_one_by_one_and_the_row_follows_each_step(self):
        self.start(link(self.folder))
        self.find("check box", "Temporary")
        self.press("check box", "The folder is over")
        self.wait_for_rule("sizeLimit", 10_000_000_000)
        self.set_number("The folder is over", 1)
        self.wait_for_rule("sizeLimit", 1_000_000_000)

        self.set_number("Not added or changed for", 4000)
        self.wait_for_rule("maxAgeDays", 3650)

        for button, disposal in [("Cancel", b"bin"), ("Delete Permanently", b"delete")]:
            self.choose_delete()
            self.assertEqual(self.rule("disposal"), b"bin")
            self.press("push button", button)
            self.wait_for_rule("disposal", disposal)
        self.find_unchecked("The disk is nearly full")
        self.press("check box", "The disk is nearly full")
        self.wait_for_rule("automatic", 1)

    def test_the_switch_takes_the_tag_off_and_puts_it_on(self):
        self.start(link(self.folder))
        self.press("check box", "Temporary")
        SESSION.wait_for(lambda: TAG not in tags(self.folder), "the tag is off")
        self.find_unchecked("Temporary")
        self.press("check box", "Temporary")
        SESSION.wait_for(lambda: TAG in tags(self.folder), "the tag is on")

    def test_a_folder_is_added_through_the_panel(self):
        self.start()
        self.press("push button", "Add a folder")
        self.find("text", "Directory:", Atspi.StateType.FOCUSED)
        subprocess.run(["xdotool", "type", os.fsdecode(self.folder)], env=SESSION.environment, check=True)
        self.wait_for(self.is_added, "the panel added the folder")
        self.assertEqual(tags(self.folder), [])
        self.press("check box", "Temporary")
        SESSION.wait_for(lambda: TAG in tags(self.folder), "the folder is Temporary")


if __name__ == "__main__":
    unittest.main(verbosity=2)
