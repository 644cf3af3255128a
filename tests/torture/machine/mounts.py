"""Mounts that only this process and its children see, and that end with them."""

import contextlib
import ctypes
import functools
import os
import subprocess
import tempfile

from machine.driver import as_root

NEW_MOUNTS = 0x00020000
_libc = ctypes.CDLL(None, use_errno=True)


@functools.cache
def enter_own_mounts():
    """Answers why it isn't possible, or nothing."""
    with as_root():
        if _libc.unshare(NEW_MOUNTS) != 0:
            return f"no mounts of its own: {os.strerror(ctypes.get_errno())}"
        try:
            command("mount", "--make-rprivate", "/")
        except RuntimeError as error:
            return str(error)
    return ""


@as_root()
def command(*words):
    path = os.environ.get("PATH", "") + ":/usr/sbin:/sbin"
    result = subprocess.run(words, capture_output=True, text=True, env=os.environ | {"PATH": path})
    if result.returncode != 0:
        raise RuntimeError(f"{' '.join(words)}: {result.stderr.strip()}")


def detach(place):
    with contextlib.suppress(RuntimeError):
        command("umount", "--lazy", place)


@contextlib.contextmanager
def mounted(place, *words):
    """`words` are those of the command before the place."""
    command("mount", *words, place)
    try:
        yield place
    finally:
        detach(place)


class Drive:
    """A file system in a file, or one in memory, which can be taken away and brought back."""

    SIZES = {"ext4": "80M", "xfs": "300M", "btrfs": "128M"}
    OPTIONS = {"ext4": ["-q", "-F", "-m", "0", "-N", "1000"], "xfs": ["-q", "-f"], "btrfs": ["-q", "-f"]}

    def __init__(self, directory, kind, options):
        self.kind = kind
        self.place = os.path.join(directory, kind)
        self._what = ["-t", kind, "-o", options or "loop", os.path.join(directory, kind + ".image")]
        os.mkdir(self.place)
        if kind in self.SIZES:
            command("truncate", "-s", self.SIZES[kind], self._what[-1])
            command(f"mkfs.{kind}", *self.OPTIONS[kind], self._what[-1])
        self.mount()
        command("chmod", "777", self.place)

    def mount(self):
        command("mount", *self._what, self.place)

    def unmount(self, *options):
        command("umount", *options, self.place)


def drives(report, *kinds):
    """Each of them once, mounted, a tmpfs by its options; skips loudly what this machine doesn't mount."""
    reason = enter_own_mounts()
    for kind in kinds:
        kind, _, options = kind.partition(" ")
        with tempfile.TemporaryDirectory(prefix="tidemar-torture-") as directory:
            try:
                if reason:
                    raise RuntimeError(reason)
                drive = Drive(directory, kind, options)
            except RuntimeError as error:
                report.skip(f"{kind}: {error}")
                continue
            try:
                yield drive
            finally:
                detach(drive.place)
