#!/usr/bin/env python3
"""Which of several starts becomes the application, by a program that is nothing but such a start.
Usage: instance_tests.py path/to/instance [unittest's arguments]. All rounds where TIDEMAR_TORTURE is "full"."""

import os
import shutil
import signal
import stat
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "tools"))
from session import start_bus  # noqa: E402

PROGRAM = os.path.abspath(sys.argv.pop(1))
ROUNDS = 200 if os.environ.get("TIDEMAR_TORTURE") == "full" else 4
NO_BUS = "unix:path=/nowhere"


class Start:
    """One start, which waits at its first line until it is let go."""

    def __init__(self, directory, url, bus, runtime):
        environment = dict(os.environ, DBUS_SESSION_BUS_ADDRESS=bus, XDG_RUNTIME_DIR=runtime,
                           ASAN_OPTIONS="detect_leaks=0")
        self.url = url
        self.process = subprocess.Popen([PROGRAM, directory, url], env=environment, stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, text=True)

    def go(self):
        self.process.stdin.write("g")
        self.process.stdin.flush()

    def line(self):
        return self.process.stdout.readline().rstrip("\n")

    def end(self):
        """Ends the process if it is the first, and answers what it printed besides."""
        rest, _ = self.process.communicate(timeout=30)
        return rest.splitlines()


class Instances(unittest.TestCase):
    def setUp(self):
        # A test that waits for a line that never comes fails.
        signal.alarm(ROUNDS * 5 + 60)
        self.root = tempfile.mkdtemp(prefix="tidemar-instance-")
        self.addCleanup(shutil.rmtree, self.root)
        self.lock = os.path.join(self.root, "tidemar.lock")
        self.bus = self.start_bus()

    def start_bus(self):
        bus, address = start_bus()
        self.addCleanup(bus.wait)
        self.addCleanup(bus.terminate)
        return address

    def start_at_once(self, buses):
        """A start for each bus, all let go together, each with a runtime directory of its own."""
        starts = [Start(self.root, f"tidemar://folder?path=/{i}", bus, os.path.join(self.root, str(i)))
                  for i, bus in enumerate(buses)]
        for start in starts:
            start.go()
        roles = [start.line() for start in starts]
        firsts = [start for start, role in zip(starts, roles) if role == "first"]
        self.assertEqual(len(firsts), 1, roles)
        return starts, roles, firsts[0]

    def end_all(self, starts, first, asked):
        """The first was asked for exactly what the others handed over."""
        self.assertEqual(sorted(first.line() for _ in asked), sorted(asked))
        for start in starts:
            self.assertEqual(start.end(), [])

    def test_one_start_is_first_with_a_private_lock_and_those_of_its_bus_hand_over(self):
        self.addCleanup(os.umask, os.umask(0))
        for buses in [[self.bus] * 8, [NO_BUS] * 8, [self.bus, self.start_bus(), NO_BUS] * 2] * ROUNDS:
            starts, roles, first = self.start_at_once(buses)
            own = buses[starts.index(first)]
            mates = [s for s, bus in zip(starts, buses) if s is not first and bus == own != NO_BUS]
            refused = len(starts) - 1 - len(mates)
            self.assertEqual(sorted(roles), ["first"] + ["handed over"] * len(mates) + ["refused"] * refused)
            self.end_all(starts, first, [start.url for start in mates])
            self.assertEqual(stat.S_IMODE(os.stat(self.lock).st_mode), 0o600)

    def test_a_start_beside_the_death_of_the_first_becomes_the_first(self):
        for number in range(ROUNDS):
            _, _, first = self.start_at_once([self.bus])
            start = Start(self.root, "tidemar://next", self.bus, self.root)
            first.process.kill()
            start.go()
            self.assertIn(start.line(), ["first", "handed over"], number)
            first.end()
            start.end()

    def test_where_nothing_can_be_locked_a_running_one_is_asked_and_else_none_starts(self):
        elsewhere = os.path.join(self.root, "elsewhere")
        plants = {"a link": lambda: os.symlink(elsewhere, self.lock), "a directory": lambda: os.mkdir(self.lock),
                  "a pipe": lambda: os.mkfifo(self.lock)}
        for name, plant in plants.items():
            with self.subTest(name):
                plant()
                for bus in [self.bus, NO_BUS]:
                    start = Start(self.root, "", bus, self.root)
                    start.go()
                    self.assertRegex(start.line(), "^Couldn't lock “.*/tidemar.lock”: .*\\.$")
                    start.end()
                    self.assertEqual(start.process.returncode, 1)
                self.assertFalse(os.path.exists(elsewhere))
                shutil.move(self.lock, self.lock + name)
        starts, _, first = self.start_at_once([self.bus])
        os.rename(self.lock, elsewhere)
        os.mkdir(self.lock)
        start = Start(self.root, "tidemar://later", self.bus, self.root)
        start.go()
        self.assertEqual(start.line(), "handed over")
        self.end_all([*starts, start], first, [start.url])


if __name__ == "__main__":
    unittest.main(verbosity=2)
