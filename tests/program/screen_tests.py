#!/usr/bin/python3
"""The screens used from outside, by the names that a screen reader speaks. Usage: screen_tests.py path/to/tidemar [unittest's
arguments]"""

import os
import subprocess
import sys
import unittest

import accessible
from accessible import Atspi, GLib, look
from session import TAG, Session, link, tags

PROGRAM = sys.argv.pop(1)
SESSION = None


def setUpModule():
    """One session serves all tests: the bindings connect to one accessibility bus in a process's life."""
    global SESSION
    SESSION = Session(PROGRAM)
    unittest.addModuleCleanup(SESSION.__exit__)
    SESSION.__enter__()
    accessible.start(SESSION)


class TheFolderPage(unittest.TestCase):
    def setUp(self):
        self.folder = os.path.join(os.fsencode(SESSION.home), self.id().encode()[-20:])
        os.mkdir(self.folder)
        with open(os.path.join(self.folder, b"item"), "wb"):
            pass

    def start(self, *arguments):
        program = SESSION.start(*arguments)
        self.addCleanup(lambda: program.poll() is None and SESSION.stop(program))

    def find(self, *what, **lacking):
        return accessible.find(SESSION, *what, **lacking)

    def is_added(self):
        """Presses Return as long as the panel is there: while it offers completions the key only takes one."""
        if look("text", "Directory:", Atspi.StateType.FOCUSED):
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
        accessible.wait_for(SESSION, lambda: not look(*question), "the question is gone")
        self.find("frame", "Tidemar", Atspi.StateType.ACTIVE)
        self.press("combo box", "Move to Bin")
        self.find("combo box", "Move to Bin", Atspi.StateType.EXPANDED)
        self.type_keys("Down", "Return")
        self.find(*question)

    def rule(self, column):
        return SESSION.rows(f"SELECT {column} FROM folder WHERE path = ?", os.fsdecode(self.folder))[0][0]

    def wait_for_rule(self, column, value):
        accessible.wait_for(SESSION, lambda: self.rule(column) == value, f"{column} is {value}")

    def set_number(self, name, number):
        """Types a number as a user does, once its rule is seen to be on, and leaves the field."""
        self.find("spin button", name, Atspi.StateType.ENABLED).grab_focus()
        self.find("spin button", name, Atspi.StateType.FOCUSED)
        self.type_keys("ctrl+a")
        subprocess.run(["xdotool", "type", str(number)], env=SESSION.environment, check=True)
        self.type_keys("Return")

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
        self.press("check box", "Temporary")
        SESSION.wait_for(lambda: TAG not in tags(self.folder), "the tag is off")

    def test_a_folder_is_added_through_the_panel(self):
        self.start()
        self.press("push button", "Add a folder")
        self.find("text", "Directory:", Atspi.StateType.FOCUSED)
        subprocess.run(["xdotool", "type", os.fsdecode(self.folder)], env=SESSION.environment, check=True)
        accessible.wait_for(SESSION, self.is_added, "the panel added the folder")
        self.assertEqual(tags(self.folder), [])
        self.press("check box", "Temporary")
        SESSION.wait_for(lambda: TAG in tags(self.folder), "the folder is Temporary")


if __name__ == "__main__":
    unittest.main(verbosity=2)
