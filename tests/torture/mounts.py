"""Mounts that only this process and its children see, and that end with them."""

import contextlib
import ctypes
import os
import subprocess

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
