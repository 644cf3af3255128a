"""Puts something else in the place of a directory entry, as another process does, and takes it back."""

import contextlib
import ctypes
import os

from machine.canary import FRESH, contents, differences

RENAME_EXCHANGE = 2
_libc = ctypes.CDLL(None, use_errno=True)


class Swap:
    """Of one entry for a decoy that lies elsewhere: by a link to the decoy in its place, or by exchanging both.
    Holds its directory open, so it finds the entry wherever that directory has gone meanwhile. Nothing in the
    entry may go while it lies elsewhere, unless it is one that may change there."""

    def __init__(self, path, decoy, method, may_change=False):
        self.name = os.path.basename(path)
        self.decoy = decoy
        self.method = method
        self.may_change = may_change
        self.directory = os.open(os.path.dirname(path), os.O_PATH)
        self.decoys = os.open(os.path.dirname(decoy), os.O_PATH)
        # Where the entry lies while the decoy stands in its place.
        self.refuge = decoy if method == "exchange" else decoy + " aside"
        self.is_done = False
        self.problems = []

    def close(self):
        os.close(self.directory)
        os.close(self.decoys)

    def exchange(self):
        """The two entries change places in one step."""
        if _libc.renameat2(self.directory, os.fsencode(self.name), self.decoys,
                           os.fsencode(os.path.basename(self.decoy)), RENAME_EXCHANGE) != 0:
            code = ctypes.get_errno()
            raise OSError(code, os.strerror(code), self.name)

    def do(self):
        """Where the entry has gone there is nothing to swap."""
        with contextlib.suppress(FileNotFoundError):
            if self.method == "exchange":
                self.exchange()
            else:
                os.rename(self.name, os.path.basename(self.refuge), src_dir_fd=self.directory, dst_dir_fd=self.decoys)
                os.symlink(self.decoy, self.name, dir_fd=self.directory)
                os.utime(self.name, (FRESH, FRESH), dir_fd=self.directory, follow_symlinks=False)
            self.is_done = True
            self._moved = contents(self.refuge)

    def undo(self):
        """What a removal has taken just now to look at it isn't there for the moment: a later call finds it."""
        if not self.is_done:
            return
        if not self.may_change:
            self.problems += differences(f"moved away, {self.name}", self._moved, contents(self.refuge))
        with contextlib.suppress(FileNotFoundError):
            if self.method == "exchange":
                self.exchange()
            else:
                os.readlink(self.name, dir_fd=self.directory)
                os.unlink(self.name, dir_fd=self.directory)
                os.rename(os.path.basename(self.refuge), self.name, src_dir_fd=self.decoys, dst_dir_fd=self.directory)
            self.is_done = False
