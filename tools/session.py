"""A throw-away desktop session for one run of the program: a home folder of its own, a private session
bus and a virtual display. The tour and the tests of the whole program use it."""

import contextlib
import os
import shutil
import signal
import sqlite3
import subprocess
import tempfile
import time
import urllib.parse

TAG_ATTRIBUTE = "user.xdg.tags"
TAG = b"Tidemar: Temporary"
FAKETIME = "/usr/$LIB/faketime/libfaketime.so.1"
SERVICE = "app.quernly.tidemar"


def start_bus(environment=None):
    """A message bus of one's own: its process and its address."""
    command = ["dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address=1"]
    bus = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, env=environment, text=True)
    with bus.stdout:
        return bus, bus.stdout.readline().strip()


class Session:
    """Use it as a context manager. Paths are bytes where file names are concerned."""

    def __init__(self, program, directory=None, screen="1400x1000x24"):
        self.program = os.path.abspath(program)
        self.root = tempfile.mkdtemp(prefix="tidemar-session-", dir=directory)
        self.home = os.path.join(self.root, "home")
        runtime = os.path.join(self.root, "run")
        os.makedirs(self.home)
        os.makedirs(runtime, mode=0o700)
        self.environment = {
            key: value for key, value in os.environ.items()
            if not key.startswith(("XDG_", "DBUS_", "QT_", "DISPLAY", "WAYLAND_", "LC_"))
        }
        self.environment.update(HOME=self.home, XDG_RUNTIME_DIR=runtime, LANG="C.UTF-8", TZ="UTC",
                                ASAN_OPTIONS="verify_asan_link_order=0:detect_leaks=0")
        self._screen = screen
        self._services = []
        self.processes = []

    def __enter__(self):
        try:
            self._start_display()
            bus, self.environment["DBUS_SESSION_BUS_ADDRESS"] = start_bus(self.environment)
            self._services.append(bus)
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for process in reversed(self._services + self.processes):
            if process.poll() is None:
                process.terminate()
                try:
                    process.wait(10)
                except subprocess.TimeoutExpired:
                    process.kill()
                    process.wait()
            if process.stderr:
                process.stderr.close()
            # What a killed program leaves there could hold up one that gets its number later.
            for left in ("faketime_shm_", "sem.faketime_sem_"):
                with contextlib.suppress(FileNotFoundError):
                    os.unlink(f"/dev/shm/{left}{process.pid}")
        shutil.rmtree(self.root, ignore_errors=True)

    def _start_display(self):
        reader, writer = os.pipe()
        command = ["Xvfb", "-displayfd", str(writer), "-screen", "0", self._screen, "-nolisten", "tcp", "-noreset"]
        self._services.append(subprocess.Popen(command, pass_fds=[writer], stderr=subprocess.DEVNULL))
        os.close(writer)
        with os.fdopen(reader) as display:
            self.environment["DISPLAY"] = ":" + display.readline().strip()

    def stop_display(self):
        self._services[0].terminate()
        self._services[0].wait(20)

    # The program.

    def start(self, *urls, days_ahead=0, prefix=(), **options):
        """Starts the program, with its clock so many days ahead; files keep their dates."""
        environment = dict(self.environment)
        command = [*prefix, self.program, *urls]
        if days_ahead:
            # Not by the command faketime, which would stand between the program and its signals.
            environment.update(LD_PRELOAD=FAKETIME, FAKETIME=f"+{days_ahead}d", NO_FAKE_STAT="1",
                               FAKETIME_DONT_FAKE_MONOTONIC="1")
        process = subprocess.Popen(command, env=environment, **options)
        self.processes.append(process)
        return process

    def stop(self, process, with_signal=signal.SIGTERM, patience=20):
        """Ends the program as a session's end does and answers its exit status."""
        process.send_signal(with_signal)
        return process.wait(patience)

    def call(self, method, *arguments):
        """Calls the running program over the bus, once it is there."""
        subprocess.run(["gdbus", "wait", "--session", "--timeout", "30", SERVICE], env=self.environment, check=True)
        subprocess.run(["gdbus", "call", "--session", "--dest", SERVICE, "--object-path", "/app/quernly/tidemar",
                        "--method", f"org.freedesktop.Application.{method}", *arguments],
                       env=self.environment, check=True, stdout=subprocess.DEVNULL)

    # What it leaves behind.

    @property
    def data(self):
        return os.path.join(self.home, ".local", "share")

    @property
    def database(self):
        return os.path.join(self.data, "Tidemar", "tidemar.sqlite")

    @property
    def trash(self):
        return os.path.join(self.data, "Trash")

    def rows(self, statement, *values):
        """What a query gives, without a lock on the file, which would hold up the program's writes."""
        with contextlib.closing(sqlite3.connect(f"file:{self.database}?immutable=1", uri=True)) as database:
            database.text_factory = bytes
            return database.execute(statement, values).fetchall()

    def wait_for(self, question, what, patience=60):
        """Asks until the answer is true, first at once and then less and less often; a half-written database counts
        as no answer."""
        end = time.monotonic() + patience
        pause = 0.001
        while time.monotonic() < end:
            with contextlib.suppress(sqlite3.Error, OSError):
                if answer := question():
                    return answer
            time.sleep(pause)
            pause = min(2 * pause, 0.05)
        raise TimeoutError(f"waited {patience} s until {what}")

    def last_run(self, path):
        rows = self.rows("SELECT lastRunAt FROM folder WHERE path = ?", os.fsdecode(path))
        return rows[0][0] if rows else None

    def wait_for_run(self, path, after, patience=60):
        """Waits until the folder was run later than at `after`, and answers when."""
        return self.wait_for(lambda: (last := self.last_run(path)) and last > after and last,
                             "the folder was cleared", patience)


def descendants(node):
    """All that lies below a node of the accessibility tree."""
    for index in range(node.get_child_count()):
        child = node.get_child_at_index(index)
        if child is not None:
            yield child
            yield from descendants(child)


def link(path):
    """The URL that makes a folder Temporary."""
    return "tidemar://folder?path=" + urllib.parse.quote(os.fsencode(path))


def tags(path):
    try:
        return os.getxattr(path, TAG_ATTRIBUTE).split(b",")
    except OSError:
        return []


def shown(name):
    """A file name as one line of text, whatever its bytes."""
    return os.fsencode(name).decode("utf-8", "backslashreplace").replace("\n", "\\n")
