#!/usr/bin/env python3
"""The disk is full, of blocks or of entries, or nearly: what can't go stays, what goes has its record, and nothing is
lost."""

import contextlib
import errno
import itertools
import os

from machine import mounts
from machine.canary import FEW_KEPT, OPERATIONS, TREE, File, World, as_user, disposal_of
from machine.report import Report

DUE = {"file": File(), "tree": TREE, "other": File(), "last": {"a": File()}}
BLOCK = 4096


class Ballast:
    """Fills a drive but for some blocks or entries."""

    def __init__(self, drive, what, left):
        self.path = os.path.join(drive.place, "ballast")
        self.what = what
        with as_user():
            os.mkdir(self.path)
            (self._take_blocks if what == "blocks" else self._take_entries)(left)

    def _take_blocks(self, left):
        with open(os.path.join(self.path, "file"), "wb", buffering=0) as file:
            with contextlib.suppress(OSError):
                for size in (1 << 20, 1 << 16, BLOCK):
                    with contextlib.suppress(OSError):
                        while file.write(bytes(size)) == size:
                            pass
            file.truncate(max(0, file.tell() - left * BLOCK))
            os.fsync(file.fileno())

    def _take_entries(self, left):
        count = 0
        try:
            while True:
                os.mknod(os.path.join(self.path, str(count)))
                count += 1
        except OSError as error:
            if error.errno != errno.ENOSPC:
                raise
        for number in range(count - min(left, count), count):
            os.unlink(os.path.join(self.path, str(number)))

    def drop(self):
        for name in os.listdir(self.path):
            os.unlink(os.path.join(self.path, name))
        os.rmdir(self.path)


def filled(world, drive, operation, what, left):
    # A run before keeps some space for such a day.
    world.reset()
    world.run()
    if operation != "put-back":
        world.reset()
    ballast = Ballast(drive, what, left)
    result = world.undo() if operation == "put-back" else world.run()
    problems = [f"full: {problem}" for problem in world.check(
        in_hand=0, is_undoing=operation == "put-back", may_wait=True)]
    if operation == "delete":
        # That is what a full disk needs.
        problems += [f"not deleted on a full disk: {name}" for name in set(DUE) & set(os.listdir(world.folder))]
    ballast.drop()
    problems += world.problems_after(result, operation)
    return problems + ([str(line) for line in result.of("failed") + result.of("error")] if problems else [])


def main():
    report = Report(__doc__)
    for drive in mounts.drives(report, ("ext4", "tmpfs"), {"tmpfs": "size=60m,nr_inodes=400"}):
        for operation in OPERATIONS:
            with World(report.tools, disposal_of(operation), DUE, FEW_KEPT, directory=drive.place) as world:
                for what, left in itertools.product(("blocks", "entries"), range(report.count(9, 2))):
                    label = f"{drive.kind} {operation}, {left} {what} left"
                    report.check(label, filled, world, drive, operation, what, left)
    report.end()


if __name__ == "__main__":
    main()
