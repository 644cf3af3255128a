"""Runs the engine's driver on a home of its own, under the hook that counts its calls of the file system and
kills, fails or stops it at one of them."""

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


def encoded(word):
    return urllib.parse.quote(os.fsencode(str(word)), safe="/!") if word is not None else "!"


def decoded(word):
    return None if word == "!" else urllib.parse.unquote(word, errors="surrogateescape")


Call = collections.namedtuple("Call", "number function path")


def call_of(line):
    number, function, path = line.decode().rstrip("\n").split(" ")
    return Call(int(number), function, decoded(path))


class Result:
    """What a process of the driver printed, how it ended, and the calls that the hook told of."""

    def __init__(self, output, status, told, messages):
        self.lines = [[decoded(word) for word in line.split(" ")] for line in output.splitlines()]
        self.status = status
        self.calls = [call_of(line) for line in told.splitlines()]
        self.messages = messages

    def of(self, word):
        return [line[1:] for line in self.lines if line[0] == word]

    @property
    def disturbed(self):
        """Where it was disturbed first, as a sentence in a list."""
        return [f"disturbed at {call.function} {call.path}" for call in self.calls[:1]]

    @property
    def problems(self):
        """A sanitizer's report, an abort, an endless loop: no failure of a call may lead there."""
        if self.status in (0, -9) or self.of("error"):
            return []
        return [f"the driver ended with {self.status}: {self.messages[-2000:]}"]


class Driver:
    def __init__(self, program, hook, home, database):
        self.program = program
        self.hook = hook
        self.database = database
        self.environment = {
            "HOME": home, "XDG_RUNTIME_DIR": os.path.join(os.path.dirname(home), "run"), "TZ": "UTC",
            "PATH": os.environ.get("PATH", "/usr/bin:/bin"), "LC_ALL": "C.UTF-8",
            "ASAN_OPTIONS": "verify_asan_link_order=0:detect_leaks=0"}

    def __call__(self, *commands, act=None, killed_after=None, **settings):
        """Performs commands, each a list of words, in one process. Settings are the hook's, in lower case; `at` is
        the number of the first call that is meant. With `act` the process asks at its calls: `act(call)` answers
        "go", "kill" or an errno value. The process may also be killed after some seconds."""
        text = "".join(" ".join(encoded(word) for word in command) + "\n" for command in commands)
        with contextlib.ExitStack() as stack:
            output, messages, told = (stack.enter_context(tempfile.TemporaryFile()) for _ in range(3))
            theirs = None
            if act:
                ours, theirs = (stack.enter_context(end) for end in socket.socketpair(type=socket.SOCK_SEQPACKET))
                settings |= {"action": "ask", "socket": theirs.fileno()}
            passed = [told.fileno()] + ([theirs.fileno()] if theirs else [])
            process = subprocess.Popen(
                [self.program, self.database], env=self._environment(settings, told), stdin=subprocess.PIPE,
                stdout=output, stderr=messages, pass_fds=passed, **ordinary_user())
            with contextlib.suppress(BrokenPipeError), process.stdin:
                process.stdin.write(text.encode())
            if theirs:
                theirs.close()
                answer_all(ours, act)
            status = end_of(process, killed_after)
            for file in (output, messages, told):
                file.seek(0)
            return Result(output.read().decode(), status, told.read(), messages.read().decode(errors="replace"))

    def _environment(self, settings, told):
        if not settings:
            return self.environment
        settings["from"] = settings.pop("at", 1)
        settings["trace" if settings["action"] == "trace" else "report"] = told.fileno()
        hooks = {"TORTURE_" + key.upper(): str(value) for key, value in settings.items()}
        return self.environment | hooks | {"LD_PRELOAD": self.hook}


def end_of(process, killed_after):
    try:
        return process.wait(killed_after or LONGEST_RUN)
    except subprocess.TimeoutExpired:
        process.kill()
        return process.wait() if killed_after else f"nothing within {LONGEST_RUN} s"


def answer_all(channel, act):
    channel.settimeout(LONGEST_RUN)
    # How the process ended shows in its status.
    with contextlib.suppress(TimeoutError, ConnectionError):
        while line := channel.recv(65536):
            channel.send(str(act(call_of(line))).encode())


def become_user():
    """For good."""
    if os.getuid() == 0:
        os.setgroups([])
        os.setgid(ORDINARY_USER)
        os.setuid(ORDINARY_USER)


def ordinary_user():
    """For a new process: an ordinary user's rights, whoever runs the tests."""
    if os.getuid() != 0:
        return {}
    return {"user": ORDINARY_USER, "group": ORDINARY_USER, "extra_groups": []}
