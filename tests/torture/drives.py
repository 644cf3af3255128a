"""The folder's drive is taken away or becomes read-only during a run or a put-back, and comes back."""

import contextlib
import os

from machine import mounts
from machine.canary import FEW_KEPT, OPERATIONS, TREE, File, differences, remove, snapshot, worlds

DUE = {"file": File(), "tree": TREE, "last": {"a": File()}}


def take_away(drive):
    drive.unmount("--lazy")
    return True


def make_read_only(drive):
    """Not possible while a file on it is open for writing."""
    with contextlib.suppress(RuntimeError):
        mounts.command("mount", "-o", "remount,ro", drive.place)
        return True


def lost(world, under, drive, number, lose):
    is_lost = False

    def act(_):
        nonlocal is_lost
        is_lost = is_lost or lose(drive)

    with world.prepared():
        result = world.perform(act=act, at=number, count=0)
        now_under = under
        if lose is make_read_only:
            mounts.command("mount", "-o", "remount,rw", drive.place)
        elif is_lost:
            now_under = snapshot(drive.place)
            drive.mount()
        return differences("under the mount", under, now_under) + world.problems_after(result)


def run(report):
    for drive in mounts.drives(report, "ext4", "xfs", "btrfs"):
        for world in worlds(report, OPERATIONS, DUE, FEW_KEPT, drive=drive.place):
            # A folder of the same name where the drive isn't mounted, with items of the same names.
            drive.unmount()
            os.makedirs(world.folder)
            world.put(world.folder, DUE)
            under = snapshot(drive.place)
            drive.mount()
            count = len(world.calls())
            for lose in (take_away, make_read_only):
                for number in sorted(report.random.sample(range(1, count + 1), report.count(6, 1))):
                    label = f"{drive.kind} {world.operation}, {lose.__name__} at {number}"
                    report.check(label, lost, world, under, drive, number, lose)
            drive.unmount()
            remove(world.folder)
            drive.mount()
