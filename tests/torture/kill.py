#!/usr/bin/env python3
"""Kills the program at each of its calls of the file system and the database, and at any moment, and looks at
what the next start makes of it."""

import os

from machine import mounts
from machine.canary import COPY, FAR_FUTURE, FEW_KEPT, REMAINS, TREE, File, World, puts_back
from machine.report import Report


def killed(world, operation, how):
    with world.prepared(operation) as perform:
        problems = world.problems_after(perform(**how), operation)
        if puts_back(operation):
            # Another try opens the Bin, and lays back what had been taken there.
            world.undo()
            problems += world.check(is_undoing=True, may_wait=True)
            problems += [f"left in the Bin: {name}" for name in os.listdir(world.trash) if name.startswith(REMAINS)]
        return problems


def kills(report, world, name, operation, most=12):
    calls = len(world.calls(operation))
    cases = [(f"{name} at {number}", {"action": "kill", "at": number})
             for number in report.some(range(1, calls + 1), most)]
    cases += [(f"{name} at any moment at {number}", {"killed_after": report.random.uniform(0, 0.03)})
              for number in range(report.count(170, 2))]
    for label, how in cases:
        report.check(label, killed, world, operation, how)


def killed_again(world, first, number):
    world.reset()
    world.run(action="kill", at=first.number)
    problems = world.problems_after(world.drive(("status", 1, FAR_FUTURE), action="kill", at=number), world.disposal)
    return [f"first killed at {first.function} {first.path}"] * bool(problems) + problems


def kills_again(report, world, name):
    """A next start that is killed too while it gives back what a killed run had taken, or puts records right."""
    calls = [call for call in world.calls(world.disposal) if call.function in ("renameat2", "unlinkat", "mkdirat")]
    for first in report.some(calls, 3, full=25):
        world.reset()
        world.run(action="kill", at=first.number)
        count = len(world.drive(("status", 1, FAR_FUTURE), action="trace").calls)
        for number in report.some(range(1, count + 1), 3, full=40):
            report.check(f"{name} again at {first.number} and {number}", killed_again, world, first, number)


def deep(levels):
    return {"file": File(), "twin": File(), **({"down": deep(levels - 1)} if levels else {})}


def main():
    report = Report(__doc__)
    for disposal in ("bin", "delete"):
        with World(report.tools, disposal) as world:
            report.check(f"whole run to {disposal}", lambda: world.run_whole() + world.check(in_hand=0))
            kills(report, world, f"run to {disposal}", disposal)
            kills_again(report, world, f"run to {disposal}")
            if disposal == "bin":
                kills(report, world, "put-back", "put-back")
    with World(report.tools, "delete", {"deep": deep(24)}, FEW_KEPT) as world:
        kills(report, world, "deep tree", "delete")
        kills_again(report, world, "deep tree")
    if reason := mounts.enter_own_mounts():
        report.skip(f"{COPY}: {reason}")
    else:
        with World(report.tools, "bin", {"file": File(), "tree": TREE}, FEW_KEPT) as world:
            kills(report, world, COPY, COPY, most=20)
    report.end()


if __name__ == "__main__":
    main()
