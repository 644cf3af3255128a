#!/usr/bin/python3
"""The screens used from outside, by the names that a screen reader speaks. Needs the system's own Python,
which has the accessibility bindings. Usage: screen_tests.py path/to/tidemar [unittest's arguments]"""

import os
import subprocess
import sys
import time
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "tools"))
from session import Session, link, tags  # noqa: E402

import gi  # noqa: E402

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

PROGRAM = sys.argv.pop(1)
TAG = b"Tidemar: Temporary"
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


def descendants(node):
    for index in range(node.get_child_count()):
        child = node.get_child_at_index(index)
        if child is not None:
            yield child
            yield from descendants(child)


class ScreenTest(unittest.TestCase):
    def setUp(self):
        self.folder = os.path.join(os.fsencode(SESSION.home), self.id().encode()[-20:])
        os.mkdir(self.folder)
        with open(os.path.join(self.folder, b"item"), "wb"):
            pass

    def start(self, *arguments):
        program = SESSION.start(*arguments)
        self.addCleanup(lambda: program.poll() is None and SESSION.stop(program))

    def find(self, role, name, what=None):
        """The control of this role and name that is on the screen now."""
        def look():
            for node in descendants(Atspi.get_desktop(0)):
                if node.get_role_name() == role and node.get_name().startswith(name):
                    if node.get_state_set().contains(Atspi.StateType.SHOWING):
                        return node
            return None

        def careful():
            try:
                return look()
            except GLib.Error:
                return None  # it vanished while it was looked at
        return SESSION.wait_for(careful, what or f"there is a {role} “{name}”", 20)

    def press(self, role, name):
        try:
            self.find(role, name).do_action(0)
        except GLib.Error:
            pass  # a modal window keeps the answer back until it closes

    def is_checked(self, role, name):
        return self.find(role, name).get_state_set().contains(Atspi.StateType.CHECKED)

    def type_keys(self, *keys):
        subprocess.run(["xdotool", "key", *keys], env=SESSION.environment, check=True)

    def rule(self, column):
        return SESSION.rows(f"SELECT {column} FROM folder WHERE path = ?", os.fsdecode(self.folder))[0][0]

    def wait_for_rule(self, column, value):
        SESSION.wait_for(lambda: self.rule(column) == value, f"{column} is {value}", 20)

    def set_number(self, name, number):
        """Types a number as a user does and leaves the field."""
        field = self.find("spin button", name)
        field.grab_focus()
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

        for typed, written in [(0, 1), (4000, 3650)]:
            self.set_number("Not added or changed for", typed)
            self.wait_for_rule("maxAgeDays", written)
        self.set_number("The folder is over", 200000)
        self.wait_for_rule("sizeLimit", 100_000_000_000_000)

        for button, disposal in [("Cancel", b"bin"), ("Delete Permanently", b"delete")]:
            self.press("combo box", "Move to Bin")
            self.find("list item", "Delete Permanently")
            self.type_keys("Down", "Return")
            self.find("label", "Delete cleared items permanently?")
            self.assertEqual(self.rule("disposal"), b"bin")
            self.press("push button", button)
            self.wait_for_rule("disposal", disposal)
        self.assertFalse(self.is_checked("check box", "The disk is nearly full"))
        self.press("check box", "The disk is nearly full")
        self.wait_for_rule("automatic", 1)

    def test_the_switch_takes_the_tag_off_and_puts_it_on(self):
        self.start(link(self.folder))
        self.press("check box", "Temporary")
        SESSION.wait_for(lambda: TAG not in tags(self.folder), "the tag is off")
        SESSION.wait_for(lambda: not self.is_checked("check box", "Temporary"), "the switch is off")
        self.press("check box", "Temporary")
        SESSION.wait_for(lambda: TAG in tags(self.folder), "the tag is on")

    def test_a_folder_is_added_through_the_panel(self):
        self.start()
        self.press("push button", "Add a folder")
        self.find("push button", "Add")
        time_out = time.monotonic() + 20
        while not SESSION.rows("SELECT 1 FROM folder WHERE path = ?", os.fsdecode(self.folder)):
            self.assertLess(time.monotonic(), time_out, "the panel added nothing")
            subprocess.run(["xdotool", "type", "--clearmodifiers", os.fsdecode(self.folder)], env=SESSION.environment)
            self.type_keys("Return")
            time.sleep(1)
        self.assertEqual(tags(self.folder), [])
        self.press("check box", "Temporary")
        SESSION.wait_for(lambda: TAG in tags(self.folder), "the folder is Temporary")


if __name__ == "__main__":
    unittest.main(verbosity=2)
