"""The disk is full, of blocks or of entries, or nearly: what can't go stays, what goes has its record, and nothing is
lost."""

import contextlib
import errno
import itertools
import os

from machine import mounts
from machine.canary import FEW_KEPT, OPERATIONS, TREE, File, remove, worlds

DUE = {"file": File(), "tree": TREE, "other": File(), "last": {"a": File()}}
BLOCK = 4096


def take_blocks(directory, left):
    with open(os.path.join(directory, "file"), "wb", buffering=0) as file:
        for size in (1 << 20, 1 << 16, BLOCK):
            with contextlib.suppress(OSError):
                while file.write(bytes(size)) == size:
                    pass
        file.truncate(max(0, file.tell() - left * BLOCK))
        os.fsync(file.fileno())


def take_entries(directory, left):
    try:
        for count in itertools.count():
            os.mknod(os.path.join(directory, str(count)))
    except OSError as error:
        if error.errno != errno.ENOSPC:
            raise
    for number in range(max(0, count - left), count):
        os.unlink(os.path.join(directory, str(number)))


def filled(world, drive, take, left):
    # A run before keeps some space for such a day.
    world.reset()
    world.run()
    if not world.puts_back:
        world.reset()
    ballast = os.path.join(drive.place, "ballast")
    os.mkdir(ballast)
    take(ballast, left)
    result = world.perform()
    problems = [f"full: {problem}" for problem in world.check(in_hand=0, may_wait=True)]
    if world.operation == "delete":
        # That is what a full disk needs.
        problems += [f"not deleted on a full disk: {name}" for name in set(DUE) & set(os.listdir(world.folder))]
    remove(ballast)
    problems += world.problems_after(result)
    return problems + (result.failures("failed", "error") if problems else [])


def run(report):
    for drive in mounts.drives(report, "ext4", "tmpfs size=60m,nr_inodes=400"):
        for world in worlds(report, OPERATIONS, DUE, FEW_KEPT, directory=drive.place):
            for take, left in itertools.product((take_blocks, take_entries), range(report.count(9, 2))):
                label = f"{drive.kind} {world.operation}, {left} {take.__name__.removeprefix('take_')} left"
                report.check(label, filled, world, drive, take, left)
