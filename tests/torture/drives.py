#!/usr/bin/env python3
"""The folder's drive is taken away or becomes read-only during a run or a put-back, and comes back."""

import os
import subprocess

from machine import mounts
from machine.canary import FEW_KEPT, OPERATIONS, TREE, File, World, as_user, differences, disposal_of, snapshot
from machine.report import Report

DUE = {"file": File(), "tree": TREE, "last": {"a": File()}}


def take_away(drive):
    drive.unmount("--lazy")
    return True


def make_read_only(drive):
    """Not possible while a file on it is open for writing."""
    return subprocess.run(["mount", "-o", "remount,ro", drive.place], capture_output=True).returncode == 0


def lost(world, drive, operation, number, lose):
    is_lost = False

    def act(_):
        nonlocal is_lost
        is_lost = is_lost or lose(drive)
        return "go"

    with world.prepared(operation) as perform:
        result = perform(act=act, at=number, count=0)
        under = world.under
        if lose is make_read_only:
            mounts.command("mount", "-o", "remount,rw", drive.place)
        elif is_lost:
            under = snapshot(drive.place)
            drive.mount()
        return differences("under the mount", world.under, under) + world.problems_after(result, operation)


def put_under(world, drive):
    """A folder of the same name where the drive isn't mounted, with items of the same names."""
    drive.unmount()
    os.chmod(drive.place, 0o777)
    with as_user():
        os.makedirs(world.folder)
        world.put(world.folder, DUE)
    world.under = snapshot(drive.place)
    drive.mount()


def main():
    report = Report(__doc__)
    for drive in mounts.drives(report, ("ext4", "xfs", "btrfs")):
        for operation in OPERATIONS:
            with World(report.tools, disposal_of(operation), DUE, FEW_KEPT, drive=drive.place) as world:
                put_under(world, drive)
                count = len(world.calls(operation))
                for lose in (take_away, make_read_only):
                    for number in sorted(report.random.sample(range(1, count + 1), report.count(6, 1))):
                        label = f"{drive.kind} {operation}, {lose.__name__} at {number}"
                        report.check(label, lost, world, drive, operation, number, lose)
                drive.unmount()
                subprocess.run(["rm", "-rf", world.folder], check=True)
                drive.mount()
    report.end()


if __name__ == "__main__":
    main()
