"""The power fails during a run or a put-back: the file system stops there and then, with what it has written, and
is mounted anew."""

import ctypes
import fcntl
import os

from machine import mounts
from machine.canary import FEW_KEPT, OPERATIONS, TREE, File, worlds
from machine.driver import KILL, as_root

SHUTDOWN = 0x8004587D
DUE = {"file": File(), "tree": TREE, "other": File(), "last": {"a": File()}}
# What still lies in the journal's memory: written, lost, or lost with the program going on.
LOSSES = {"flushed": 1, "lost": 2, "noticed": 2}


@as_root()
def with_open(place, function, *arguments):
    directory = os.open(place, os.O_RDONLY)
    try:
        function(directory, *arguments)
    finally:
        os.close(directory)


def failed(world, drive, number, how):
    with world.prepared():
        with_open(drive.place, ctypes.CDLL(None).syncfs)

        def act(_):
            with_open(drive.place, fcntl.ioctl, SHUTDOWN, ctypes.c_uint32(LOSSES[how]))
            return None if how == "noticed" else KILL

        result = world.perform(act=act, at=number)
        drive.unmount()
        drive.mount()
        problems = world.problems_after(result)
        return problems + [f"an empty record: {name}" for name, path in world.records() if not os.path.basename(path)]


def run(report):
    for drive in mounts.drives(report, "ext4", "xfs"):
        for world in worlds(report, OPERATIONS, DUE, FEW_KEPT, directory=drive.place):
            count = len(world.calls())
            for case in range(report.count(50, 3)):
                number, how = report.random.randrange(1, count + 1), report.random.choice(list(LOSSES))
                label = f"{drive.kind} {world.operation}, {how} at {number}, {case}"
                report.check(label, failed, world, drive, number, how)
