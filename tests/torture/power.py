#!/usr/bin/env python3
"""The power fails during a run or a put-back: the file system stops there and then, with what it has written, and
is mounted anew."""

import ctypes
import fcntl
import os

from machine import mounts
from machine.canary import FEW_KEPT, OPERATIONS, TREE, File, World, disposal_of
from machine.report import Report

SHUTDOWN = 0x8004587D
DUE = {"file": File(), "tree": TREE, "other": File(), "last": {"a": File()}}
# What still lies in the journal's memory: written, lost, or lost with the program going on.
LOSSES = {"flushed": 1, "lost": 2, "noticed": 2}


def stop(place, how):
    directory = os.open(place, os.O_RDONLY)
    try:
        fcntl.ioctl(directory, SHUTDOWN, ctypes.c_uint32(LOSSES[how]))
    finally:
        os.close(directory)


def sync(place):
    directory = os.open(place, os.O_RDONLY)
    ctypes.CDLL(None).syncfs(directory)
    os.close(directory)


def failed(world, drive, operation, number, how):
    with world.prepared(operation) as perform:
        sync(drive.place)

        def act(_):
            stop(drive.place, how)
            return "go" if how == "noticed" else "kill"

        result = perform(act=act, at=number)
        drive.unmount()
        drive.mount()
        problems = world.problems_after(result, operation)
        return problems + [f"an empty record: {name}" for name, path in world.records() if not os.path.basename(path)]


def main():
    report = Report(__doc__)
    for drive in mounts.drives(report, ("ext4", "xfs")):
        for operation in OPERATIONS:
            with World(report.tools, disposal_of(operation), DUE, FEW_KEPT, directory=drive.place) as world:
                count = len(world.calls(operation))
                for case in range(report.count(50, 3)):
                    number, how = report.random.randrange(1, count + 1), report.random.choice(list(LOSSES))
                    label = f"{drive.kind} {operation}, {how} at {number}, {case}"
                    report.check(label, failed, world, drive, operation, number, how)
    report.end()


if __name__ == "__main__":
    main()
