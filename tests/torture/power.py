#!/usr/bin/env python3
"""The power fails during a run or a put-back: the file system stops there and then, with what it has written, and
is mounted anew."""

import ctypes
import fcntl
import os

from machine import mounts
from machine.canary import TREE, File, World
from machine.report import Report

SHUTDOWN = 0x8004587D
DUE = {"file": File(), "tree": TREE, "other": File(), "last": {"a": File()}}
KEPT = {".hidden item": File(), "fresh": File(fresh=True)}
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
    world.reset()
    if operation == "put-back":
        world.run()
    sync(drive.place)
    perform = world.undo if operation == "put-back" else world.run
    calls = []

    def act(call):
        calls.append(f"failed at {call.function} {call.path}")
        stop(drive.place, how)
        return "go" if how == "noticed" else "kill"

    result = perform(act=act, at=number)
    drive.unmount()
    drive.mount()
    again = world.start_again()
    problems = result.problems + again.problems + [f"next start: {line}" for line in again.of("error")]
    problems += [f"an empty record: {name}" for name, path in world.records() if not os.path.basename(path)]
    problems += world.check(is_undoing=operation == "put-back", may_wait=True)
    if operation != "put-back":
        problems += [f"next run: {problem}" for problem in world.run_whole() + world.check()]
    return calls * bool(problems) + problems


def main():
    report = Report(__doc__)
    for drive in mounts.drives(report, ("ext4", "xfs")):
        for operation in ("bin", "delete", "put-back"):
            disposal = "delete" if operation == "delete" else "bin"
            with World(report.tools, disposal, DUE, KEPT, directory=drive.place) as world:
                perform = world.run
                if operation == "put-back":
                    world.run()
                    perform = world.undo
                count = len(perform(action="trace").calls)
                for case in range(report.count(50, 3)):
                    number, how = report.random.randrange(1, count + 1), report.random.choice(list(LOSSES))
                    label = f"{drive.kind} {operation}, {how} at {number}, {case}"
                    if report.wants(label):
                        report.case(label, failed(world, drive, operation, number, how))
    report.end()


if __name__ == "__main__":
    main()
