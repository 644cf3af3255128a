"""Runs the engine's driver on a home of its own, under the hook that asks at its calls of the file system."""

import collections
import contextlib
import os
import socket
import subprocess
import tempfile
import urllib.parse

ORDINARY_USER = 65534
FAR_FUTURE = 4_000_000_000
LONGEST_RUN = 120
KILL = "kill"

Call = collections.namedtuple("Call", "number function path")


def become_ordinary():
    """What is tried is an ordinary user's, whoever runs the checks."""
    if os.getuid() == 0:
        os.setgroups([])
        os.setgid(ORDINARY_USER)
        os.setresuid(ORDINARY_USER, ORDINARY_USER, 0)


@contextlib.contextmanager
def as_root():
    """As far as whoever runs the checks has these rights."""
    before = os.getresuid()
    if 0 in before:
        os.setresuid(0, 0, 0)
    try:
        yield
    finally:
        os.setresuid(*before)


def encoded(word):
    return urllib.parse.quote(os.fsencode(str(word)), safe="/!") if word is not None else "!"


def decoded(word):
    return None if word == "!" else urllib.parse.unquote(word, errors="surrogateescape")


class Result:
    """What a process of the driver printed, how it ended, and the calls that it asked at."""

    def __init__(self, output, status, calls, messages):
        self.lines = [[decoded(word) for word in line.split(" ")] for line in output.splitlines()]
        self.calls = calls
        # Where it was disturbed first.
        self.disturbed = [f"disturbed at {call.function} {call.path}" for call in calls[:1]]
        # A sanitizer's report, an abort, an endless loop: no failure of a call may lead there.
        is_sound = status in (0, -9) or self.of("error")
        self.problems = [] if is_sound else [f"the driver ended with {status}: {messages[-2000:]}"]

    def of(self, *words):
        return [line[1:] for line in self.lines if line[0] in words]

    def failures(self, *words):
        return [str(line) for line in self.of(*words)]


class Driver:
    def __init__(self, program, hook, home, database):
        self.command = [program, database]
        self.environment = {
            "HOME": home, "XDG_RUNTIME_DIR": os.path.join(os.path.dirname(home), "run"), "TZ": "UTC",
            "PATH": os.environ.get("PATH", "/usr/bin:/bin"), "LC_ALL": "C.UTF-8", "LD_PRELOAD": hook,
            "ASAN_OPTIONS": "verify_asan_link_order=0:detect_leaks=0"}

    def __call__(self, *commands, act=None, at=1, count=1, function="", killed_after=None):
        """Performs commands, each a list of words, in one process. With `act` it asks at so many of its calls (0 for
        all that follow), or of those of one function, from the number `at` on: `act(call)` answers nothing, KILL or
        the errno value with which the call is to fail. The process may also be killed after some seconds."""
        text = "".join(" ".join(encoded(word) for word in command) + "\n" for command in commands)
        calls = []
        ours, theirs = socket.socketpair(type=socket.SOCK_SEQPACKET)
        with ours, tempfile.TemporaryFile() as output, tempfile.TemporaryFile() as messages:
            with theirs:
                settings = {"SOCKET": theirs.fileno(), "FROM": at, "COUNT": count, "FUNCTION": function}
                hooks = {f"TORTURE_{key}": str(value) for key, value in settings.items() if act}
                process = subprocess.Popen(
                    self.command, env=self.environment | hooks, stdin=subprocess.PIPE,
                    stdout=output, stderr=messages, pass_fds=[theirs.fileno()])
            with contextlib.suppress(BrokenPipeError), process.stdin:
                process.stdin.write(text.encode())
            late = ""
            ours.settimeout(killed_after or LONGEST_RUN)
            try:
                # Until the process has ended, which closes its end.
                while packet := ours.recv(65536):
                    number, name, path = packet.split(b" ", 2)
                    calls.append(Call(int(number), name.decode(), os.fsdecode(path)))
                    answer = act(calls[-1])
                    if answer == KILL:
                        process.kill()
                    else:
                        ours.send(str(answer or 0).encode())
            except TimeoutError:
                process.kill()
                late = "" if killed_after else f"nothing within {LONGEST_RUN} s"
            except ConnectionError:
                pass  # How the process ended shows in its status.
            status = late or process.wait()
            output.seek(0)
            messages.seek(0)
            return Result(output.read().decode(), status, calls, messages.read().decode(errors="replace"))
