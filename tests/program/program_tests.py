#!/usr/bin/env python3
"""Tests of the whole program from outside: real files, a private bus, a virtual display, a shifted clock.
Usage: program_tests.py path/to/tidemar [unittest's arguments]"""

import contextlib
import datetime
import os
import pathlib
import signal
import sqlite3
import subprocess
import sys
import time
import unittest
import urllib.parse

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "tools"))
from session import SERVICE, TAG, Session, link, start_bus, tags  # noqa: E402

from gi.repository import Gio, GLib  # noqa: E402

PROGRAM = sys.argv.pop(1)
DAYS = 100
APPLICATION_INTERFACE = """<node><interface name="org.freedesktop.Application">
<method name="Activate"><arg type="a{sv}" direction="in"/></method>
<method name="Open"><arg type="as" direction="in"/><arg type="a{sv}" direction="in"/></method>
<method name="ActivateAction"><arg type="s" direction="in"/><arg type="av" direction="in"/>
<arg type="a{sv}" direction="in"/></method>
</interface></node>"""


def connect(address):
    flags = Gio.DBusConnectionFlags
    return Gio.DBusConnection.new_for_address_sync(
        address, flags.AUTHENTICATION_CLIENT | flags.MESSAGE_BUS_CONNECTION, None, None)


@contextlib.contextmanager
def running_instance(address, calls):
    """Stands on the bus in the program's place and keeps the calls that come in."""
    bus = connect(address)

    def take(_bus, _sender, _path, _interface, method, parameters, invocation):
        calls.append((method, parameters.unpack()))
        invocation.return_value(None)
    interface = Gio.DBusNodeInfo.new_for_xml(APPLICATION_INTERFACE).interfaces[0]
    bus.register_object("/app/quernly/tidemar", interface, take, None, None)
    Gio.bus_own_name_on_connection(bus, SERVICE, Gio.BusNameOwnerFlags.NONE, None, None)
    GLib.MainContext.default().iteration(True)
    yield
    bus.close_sync(None)


def write(path, content=b"x" * 100, days_ahead=0):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(content)
    if days_ahead:
        date = time.time() + days_ahead * 86400
        os.utime(path, (date, date))


def content(path):
    return pathlib.Path(os.fsdecode(path)).read_bytes()


class ProgramTest(unittest.TestCase):
    def setUp(self):
        self.session = self.enterContext(Session(PROGRAM))
        self.folder = self.make_folder(b"Downloads")

    def make_folder(self, name):
        folder = os.path.join(os.fsencode(self.session.home), name)
        os.mkdir(folder)
        return folder

    def path(self, name):
        return os.path.join(self.folder, name)

    def names(self):
        return set(os.listdir(self.folder))

    def make_temporary(self, **options):
        """Starts the program with the folder's link, ends it once the folder is Temporary, and answers the last run."""
        program = self.session.start(link(self.folder), **options)
        self.session.wait_for(lambda: TAG in tags(self.folder), "the folder is Temporary")
        self.assertEqual(self.session.stop(program), 0)
        # Only now does nothing write it any more: the tag comes before its row.
        return self.session.last_run(self.folder)

    def clear(self, after, **options):
        """Starts the program when everything old is due, waits for its run, and answers the program and when it ran."""
        program = self.session.start(days_ahead=DAYS, **options)
        return program, self.session.wait_for_run(self.folder, after)


class TheMainJob(ProgramTest):
    def test_old_items_leave_by_age_and_only_they(self):
        odd = b"a \n%#\xff.txt"
        for name in [b"old.txt", odd, b".hidden-by-dot", b"hidden-by-list", b"build/logs/deep.log"]:
            write(self.path(name))
        write(self.path(b".hidden"), b"hidden-by-list\n")
        write(self.path(b"new.txt"), days_ahead=DAYS - 1)
        write(self.path(b"in-use/draft.txt"), days_ahead=DAYS - 1)
        os.setxattr(self.folder, "user.xdg.tags", b"Work,Red")

        made = self.make_temporary()
        self.assertEqual(tags(self.folder), [b"Work", b"Red", TAG])
        self.assertIn(b"old.txt", self.names())

        program, performed = self.clear(made)
        stays = {b".hidden-by-dot", b"hidden-by-list", b".hidden", b"new.txt", b"in-use"}
        self.assertEqual(self.names(), stays)

        rows = self.session.rows("SELECT name, reasons, disposal, performedAt, binnedPath, undoneAt FROM journalEntry")
        self.assertEqual({row[0] for row in rows}, {b"old.txt", odd, b"build"})
        self.assertEqual({row[1:4] for row in rows}, {(b'["age"]', b"bin", performed)})
        for name, _, _, _, binned, undone in rows:
            self.assertTrue(os.path.lexists(binned), binned)
            self.assertIsNone(undone)
            self.check_trash_record(binned, self.path(name))
        [(entry,)] = self.session.rows("SELECT id FROM journalEntry WHERE name = 'build'")
        self.session.call("ActivateAction", "put-back", f"[<int64 {entry}>]", "{}")
        self.session.wait_for(lambda: self.session.rows("SELECT 1 FROM journalEntry WHERE undoneAt IS NOT NULL"),
                              "the entry is undone")
        self.assertEqual(content(self.path(b"build/logs/deep.log")), b"x" * 100)
        for part in ["files", "info"]:
            self.assertEqual(len(os.listdir(os.path.join(self.session.trash, part))), 2)

        # Taken off by hand, the tag stops the clearing at once, and the run is still remembered.
        self.session.stop(program)
        os.setxattr(self.folder, "user.xdg.tags", b"Work,Red")
        self.session.start(days_ahead=2 * DAYS)
        self.session.wait_for_run(self.folder, performed)
        self.assertEqual(self.names(), stays | {b"build"})
        self.assertEqual(len(self.session.rows("SELECT id FROM journalEntry")), 3)

    def check_trash_record(self, binned, original):
        """The record beside a binned item is what the freedesktop Trash specification wants."""
        files, name = os.path.split(binned)
        record = os.path.join(os.path.dirname(files), b"info", name + b".trashinfo")
        lines = content(record).decode("ascii").split("\n")
        self.assertEqual(lines[0], "[Trash Info]")
        values = dict(line.split("=", 1) for line in lines[1:] if line)
        self.assertEqual(urllib.parse.unquote_to_bytes(values["Path"]), original)
        self.assertRegex(values["Path"], r"^[A-Za-z0-9/._~%!$&'()*+,;=:@-]+$")
        datetime.datetime.strptime(values["DeletionDate"], "%Y-%m-%dT%H:%M:%S")

    def test_a_clock_set_forward_is_no_restart_of_the_computer(self):
        write(self.path(b"file.txt"))
        made = self.make_temporary()
        statement = "UPDATE folder SET emptyOnRestart = 1, maxAgeDays = NULL"
        subprocess.run(["sqlite3", self.session.database, statement], check=True)
        self.clear(made)
        self.assertEqual(self.names(), {b"file.txt"})


class OneProcess(ProgramTest):
    def test_a_second_start_hands_its_link_to_the_first_or_is_refused_and_never_runs(self):
        first = self.session.start()
        self.session.wait_for(lambda: os.path.exists(self.session.database), "the first is there")
        nowhere = ("env", "-u", "XDG_RUNTIME_DIR", "DBUS_SESSION_BUS_ADDRESS=unix:path=/nowhere")
        for prefix in [("dbus-run-session", "--"), nowhere]:
            with self.subTest(prefix):
                second = self.session.start(link(self.folder), prefix=prefix, stderr=subprocess.PIPE)
                self.assertEqual(second.wait(20), 1)
                self.assertIn(b"running already", second.stderr.read())
        self.assertEqual(tags(self.folder), [])
        self.assertEqual(self.session.start(link(self.folder)).wait(20), 0)
        self.session.wait_for(lambda: TAG in tags(self.folder), "the folder is Temporary")
        self.assertIsNone(first.poll())

    def test_a_second_start_hands_the_launchers_token_and_its_action_on(self):
        calls = []
        with running_instance(self.session.environment["DBUS_SESSION_BUS_ADDRESS"], calls):
            token = ("env", "XDG_ACTIVATION_TOKEN=token 1", "DESKTOP_STARTUP_ID=launcher_TIME42")
            for arguments in [[], [link(self.folder)]]:
                self.assertEqual(self.hand_over(*arguments, prefix=token), 0)
            self.assertEqual(self.hand_over(), 0)
            self.assertEqual(self.hand_over("--settings"), 0)
        data = {"activation-token": "token 1", "desktop-startup-id": "launcher_TIME42"}
        self.assertEqual(calls, [("Activate", (data,)), ("Open", ([link(self.folder)], data)), ("Activate", ({},)),
                                 ("ActivateAction", ("settings", [], {}))])

    def hand_over(self, *arguments, prefix=()):
        second = self.session.start(*arguments, prefix=prefix)
        context = GLib.MainContext.default()
        end = time.monotonic() + 20
        while second.poll() is None and time.monotonic() < end:
            context.iteration(False)
            time.sleep(0.01)
        return second.poll()

    def test_arguments_that_mean_nothing_start_nothing(self):
        program = self.session.start("-style", "windows", stderr=subprocess.PIPE)
        self.assertEqual(program.wait(20), 2)
        self.assertRegex(program.stderr.read(), b"^Tidemar [^\n]+\\.\n$")
        self.assertFalse(os.path.exists(self.session.data))


class Cycles(ProgramTest):
    def test_a_wake_brings_one_cycle_however_often_it_is_told(self):
        daemon, self.session.environment["DBUS_SYSTEM_BUS_ADDRESS"] = start_bus()
        self.session.processes.append(daemon)
        logind = connect(self.session.environment["DBUS_SYSTEM_BUS_ADDRESS"])
        logind.set_exit_on_close(False)
        Gio.bus_own_name_on_connection(logind, "org.freedesktop.login1", Gio.BusNameOwnerFlags.NONE, None, None)
        self.session.start(link(self.folder))
        self.session.wait_for_run(self.folder, b"")
        self.runs()  # those of the start
        for is_about_to_sleep in [True, False] * 2:
            logind.emit_signal(None, "/org/freedesktop/login1", "org.freedesktop.login1.Manager",
                               "PrepareForSleep", GLib.Variant("(b)", (is_about_to_sleep,)))
        logind.flush_sync(None)
        self.assertEqual(self.runs(), 1)

    def runs(self):
        """How many runs follow, until there has been none for a while."""
        last, count, since = self.session.last_run(self.folder), 0, time.monotonic()
        while time.monotonic() < since + 4:
            time.sleep(0.005)
            with contextlib.suppress(sqlite3.Error):  # it is being written
                run = self.session.last_run(self.folder)
                if run != last:
                    last, count, since = run, count + 1, time.monotonic()
        return count

    def test_a_run_that_is_ended_stops_between_two_items_and_is_left_to_be_done_again(self):
        items = {b"%d" % number for number in range(1500)}
        for end in [signal.SIGTERM, signal.SIGINT, "the end of the display"]:
            with self.subTest(end), Session(PROGRAM) as self.session:
                self.folder = self.make_folder(b"Downloads")
                for item in items:
                    write(self.path(item), b"")
                self.make_temporary()
                program = self.session.start(days_ahead=DAYS)
                self.session.wait_for(lambda: len(self.names()) < len(items) - 20, "some have gone")
                if isinstance(end, str):
                    self.session.stop_display()
                    program.wait(20)
                else:
                    self.assertEqual(self.session.stop(program, end, patience=2), 0)
                self.assertGreater(len(self.names()), 0, "the run was over before it could be stopped")
                rows = self.session.rows("SELECT name, performedAt FROM journalEntry")
                self.assertEqual({name for name, _ in rows}, items - self.names())
                [performed] = {performed for _, performed in rows}
                self.assertLess(self.session.last_run(self.folder), performed)


class BadInput(ProgramTest):
    def quit_alert(self):
        """Waits for an alert of the program and presses its button."""
        manager = subprocess.Popen(["openbox"], env=self.session.environment, stderr=subprocess.DEVNULL)
        self.session.processes.append(manager)

        def run(*command):
            return subprocess.run(["xdotool", *command], env=self.session.environment, capture_output=True, timeout=30)
        search = ["search", "--onlyvisible", "--name", "Tidemar", "windowfocus", "--sync"]
        # The search fails, too, where any window goes while it is looked at.
        self.session.wait_for(lambda: run(*search).returncode == 0, "an alert has the keyboard", 30)
        run("key", "Return").check_returncode()

    def test_a_database_that_cannot_be_used_ends_the_start_and_stays_as_it_is(self):
        self.make_temporary()
        os.truncate(self.session.database, 5000)
        before = content(self.session.database)
        program = self.session.start(stderr=subprocess.PIPE)
        self.quit_alert()
        self.assertEqual(program.wait(20), 1)
        self.assertIn(b"fault: Couldn't start: ", program.stderr.read())
        self.assertEqual(content(self.session.database), before)

    def test_a_trash_that_is_a_link_is_not_used_and_the_log_names_no_item(self):
        canary = b"canary-5f1e.txt"
        write(self.path(canary))
        made = self.make_temporary()
        elsewhere = os.path.join(self.session.root, "elsewhere")
        os.mkdir(elsewhere)
        os.symlink(elsewhere, self.session.trash)
        program, _ = self.clear(made, stderr=subprocess.PIPE)
        self.session.stop(program)
        log = program.stderr.read()
        self.assertEqual(self.names(), {canary})
        self.assertEqual(os.listdir(elsewhere), [])
        self.assertEqual(self.session.rows("SELECT * FROM journalEntry"), [])
        if not os.path.exists("/run/systemd/journal/socket"):
            self.assertIn(b"Couldn't remove <private>: ", log)
        self.assertNotIn(canary, log)


if __name__ == "__main__":
    unittest.main(verbosity=2)
