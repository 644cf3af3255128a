#!/usr/bin/python3
"""The screens used from outside, by the names that a screen reader speaks.
Usage: screen_tests.py path/to/tidemar [unittest's arguments]"""

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

    def find(self, *what):
        return accessible.find(SESSION, *what)

    def is_added(self):
        """Presses Return as long as the panel is there: while it offers completions the key only takes one."""
        if SESSION.rows("SELECT 1 FROM folder WHERE path = ?", os.fsdecode(self.folder)):
            return True
        if look("text", "Directory:", Atspi.StateType.FOCUSED):
            self.type_keys("Return")
        return False

    def press(self, role, name):
        try:
            self.find(role, name).do_action(0)
        except GLib.Error:
            pass  # a modal window keeps the answer back until it closes

    def type_keys(self, *keys):
        subprocess.run(["xdotool", "key", *keys], env=SESSION.environment, check=True)

    def test_rules_are_set_and_the_row_follows(self):
        self.start(link(self.folder))
        self.press("check box", "The folder is over")
        self.wait_for_limit(10_000_000_000)
        # As a user does, once the rule is seen to be on.
        self.find("spin button", "The folder is over", Atspi.StateType.ENABLED).grab_focus()
        self.find("spin button", "The folder is over", Atspi.StateType.FOCUSED)
        self.type_keys("ctrl+a", "1", "Return")
        self.wait_for_limit(1_000_000_000)
        self.press("check box", "Temporary")
        SESSION.wait_for(lambda: TAG not in tags(self.folder), "the tag is off")

    def wait_for_limit(self, limit):
        question = ("SELECT 1 FROM folder WHERE path = ? AND sizeLimit = ?", os.fsdecode(self.folder), limit)
        SESSION.wait_for(lambda: SESSION.rows(*question), f"the limit is {limit}")

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
