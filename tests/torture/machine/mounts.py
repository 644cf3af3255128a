"""Mounts that only this process and its children see, and that end with them."""

import contextlib
import ctypes
import os
import subprocess
import tempfile

NEW_MOUNTS = 0x00020000
_libc = ctypes.CDLL(None, use_errno=True)
_entered = []


def enter_own_mounts():
    """Answers why it isn't possible, or nothing."""
    if not _entered:
        if _libc.unshare(NEW_MOUNTS) != 0:
            return f"no mounts of its own: {os.strerror(ctypes.get_errno())}"
        try:
            command("mount", "--make-rprivate", "/")
        except RuntimeError as error:
            return str(error)
        _entered.append(True)
    return ""


def command(*words):
    path = os.environ.get("PATH", "") + ":/usr/sbin:/sbin"
    result = subprocess.run(words, capture_output=True, text=True, env=os.environ | {"PATH": path})
    if result.returncode != 0:
        raise RuntimeError(f"{' '.join(words)}: {result.stderr.strip()}")
    return result.stdout


@contextlib.contextmanager
def mounted(place, *words):
    """`words` are those of the command before the place."""
    command("mount", *words, place)
    try:
        yield place
    finally:
        subprocess.run(["umount", "--lazy", place], check=False)


class Drive:
    """A file system in a file, or one in memory, which can be taken away and brought back."""

    SIZES = {"ext4": "80M", "xfs": "300M", "btrfs": "128M"}
    OPTIONS = {"ext4": ["-q", "-F", "-m", "0", "-N", "1000"], "xfs": ["-q", "-f"], "btrfs": ["-q", "-f"]}

    def __init__(self, directory, kind, options=""):
        self.kind = kind
        self.place = os.path.join(directory, kind)
        self._image = os.path.join(directory, kind + ".image")
        self._options = options
        os.makedirs(self.place, exist_ok=True)
        if kind != "tmpfs":
            command("truncate", "-s", self.SIZES[kind], self._image)
            command(f"mkfs.{kind}", *self.OPTIONS[kind], self._image)

    def __enter__(self):
        self.mount()
        os.chmod(self.place, 0o777)
        return self

    def __exit__(self, *_):
        subprocess.run(["umount", "--lazy", self.place], capture_output=True, check=False)

    def mount(self):
        options = [option for option in (self._options, "" if self.kind == "tmpfs" else "loop") if option]
        words = ["-o", ",".join(options)] if options else []
        command("mount", "-t", self.kind, *words, "none" if self.kind == "tmpfs" else self._image, self.place)

    def unmount(self, *options):
        command("umount", *options, self.place)


def drives(report, kinds, options=None):
    """Each of them once, mounted; skips loudly what this machine doesn't mount."""
    reason = enter_own_mounts()
    for kind in kinds:
        with tempfile.TemporaryDirectory(prefix="tidemar-torture-") as directory, contextlib.ExitStack() as stack:
            os.chmod(directory, 0o755)
            try:
                if reason:
                    raise RuntimeError(reason)
                drive = stack.enter_context(Drive(directory, kind, (options or {}).get(kind, "")))
            except RuntimeError as error:
                report.skip(f"{kind}: {error}")
                continue
            yield drive
