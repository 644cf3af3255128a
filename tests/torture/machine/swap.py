"""Puts something else in the place of a directory entry, as another process does, and takes it back."""

import contextlib
import ctypes
import os

from machine.canary import FRESH, contents, differences

RENAME_EXCHANGE = 2
_libc = ctypes.CDLL(None, use_errno=True)


def exchange(from_directory, name, to_directory, other):
    """Two entries change places in one step."""
    if _libc.renameat2(from_directory, os.fsencode(name), to_directory, os.fsencode(other), RENAME_EXCHANGE) != 0:
        code = ctypes.get_errno()
        raise OSError(code, os.strerror(code), name)


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

    def do(self):
        """Where the entry has gone there is nothing to swap."""
        with contextlib.suppress(FileNotFoundError):
            if self.method == "exchange":
                self._exchange()
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
                self._exchange()
            else:
                os.readlink(self.name, dir_fd=self.directory)
                os.unlink(self.name, dir_fd=self.directory)
                os.rename(os.path.basename(self.refuge), self.name, src_dir_fd=self.decoys, dst_dir_fd=self.directory)
            self.is_done = False

    def undo_for_good(self):
        self.undo()
        if self.is_done:
            self.problems.append(f"what was put in the place of {self.name} isn't there any more")

    def exchange_until(self, is_over, generator):
        """Now and then pauses, the other way round or not; ends as it began, as far as both are still there."""
        self.number = 0
        is_exchanged = False
        while is_exchanged or not is_over():
            try:
                self._exchange()
            except FileNotFoundError:
                break
            is_exchanged = not is_exchanged
            self.number += 1
            for _ in range(generator.randrange(200)):
                pass

    def _exchange(self):
        exchange(self.directory, self.name, self.decoys, os.path.basename(self.decoy))
