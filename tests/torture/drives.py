#!/usr/bin/env python3
"""The folder's drive is taken away or becomes read-only during a run or a put-back, and comes back."""

import os
import subprocess

from machine import mounts
from machine.canary import TREE, File, World, as_user, snapshot
from machine.report import Report

DUE = {"file": File(), "tree": TREE, "last": {"a": File()}}
KEPT = {".hidden item": File(), "fresh": File(fresh=True)}


def take_away(drive):
    drive.unmount("--lazy")
    return True


def make_read_only(drive):
    """Not possible while a file on it is open for writing."""
    return subprocess.run(["mount", "-o", "remount,ro", drive.place], capture_output=True).returncode == 0


def lost(world, drive, operation, number, lose):
    world.reset()
    if operation == "put-back":
        world.run()
    calls = []
    is_lost = False

    def act(call):
        nonlocal is_lost
        if not is_lost:
            is_lost = lose(drive)
            calls.append(f"lost at {call.function} {call.path}")
        return "go"

    perform = world.undo if operation == "put-back" else world.run
    result = perform(act=act, at=number, count=0)
    under = world.under
    if lose is make_read_only:
        mounts.command("mount", "-o", "remount,rw", drive.place)
    elif is_lost:
        under = snapshot(drive.place)
        drive.mount()
    again = world.start_again()
    problems = result.problems + again.problems + [f"next start: {line}" for line in again.of("error")]
    if under != world.under:
        problems.append(f"what lies under the mount was {world.under} and is {under}")
    problems += world.check(is_undoing=operation == "put-back", may_wait=True)
    if operation != "put-back":
        problems += [f"next run: {problem}" for problem in world.run_whole() + world.check()]
    return calls[-1:] * bool(problems) + problems


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
        for operation in ("bin", "delete", "put-back"):
            with World(report.tools, "delete" if operation == "delete" else "bin", DUE, KEPT, drive=drive.place) as world:
                put_under(world, drive)
                perform = world.run
                if operation == "put-back":
                    world.run()
                    perform = world.undo
                count = len(perform(action="trace").calls)
                for lose in (take_away, make_read_only):
                    for number in sorted(report.random.sample(range(1, count + 1), report.count(6, 1))):
                        label = f"{drive.kind} {operation}, {lose.__name__} at {number}"
                        if report.wants(label):
                            report.case(label, lost(world, drive, operation, number, lose))
                drive.unmount()
                subprocess.run(["rm", "-rf", world.folder], check=True)
                drive.mount()
    report.end()


if __name__ == "__main__":
    main()
