"""Kills the program at each of its calls of the file system and the database, and at any moment, and looks at
what the next start makes of it."""

import os

from machine.canary import COPY, DUE, FEW_KEPT, KEPT, REMAINS, TREE, File, worlds
from machine.driver import FAR_FUTURE, KILL

# What the next start does with the folder.
FIRST = ("status", 1, FAR_FUTURE)


def kill(_):
    return KILL


def killed(world, how):
    with world.prepared():
        problems = world.problems_after(world.perform(**how))
        if world.puts_back:
            # Another try opens the Bin, and lays back what had been taken there.
            world.undo()
            problems += world.check(may_wait=True)
            problems += [f"left in the Bin: {name}" for name in os.listdir(world.trash) if name.startswith(REMAINS)]
        return problems


def kills(report, world, name, most=12):
    calls = len(world.calls())
    cases = [(f"{name} at {number}", {"act": kill, "at": number})
             for number in report.some(range(1, calls + 1), most)]
    cases += [(f"{name} at any moment at {number}", {"killed_after": report.random.uniform(0, 0.03)})
              for number in range(report.count(170, 2))]
    for label, how in cases:
        report.check(label, killed, world, how)


def killed_again(world, first, number):
    world.reset()
    world.run(act=kill, at=first.number)
    problems = world.problems_after(world.drive(FIRST, act=kill, at=number))
    return [f"first killed at {first.function} {first.path}"] * bool(problems) + problems


def kills_again(report, world, name):
    """A next start that is killed too while it gives back what a killed run had taken, or puts records right."""
    calls = [call for call in world.calls() if call.function in ("renameat2", "unlinkat", "mkdirat")]
    for first in report.some(calls, 3, full=25):
        world.reset()
        world.run(act=kill, at=first.number)
        count = len(world.drive(FIRST, act=lambda _: None, count=0).calls)
        for number in report.some(range(1, count + 1), 3, full=40):
            report.check(f"{name} again at {first.number} and {number}", killed_again, world, first, number)


def deep(levels):
    return {"file": File(), "twin": File(), **({"down": deep(levels - 1)} if levels else {})}


TRIALS = (
    ("bin", "run to bin", DUE, KEPT), ("put-back", "put-back", DUE, KEPT), ("delete", "run to delete", DUE, KEPT),
    ("delete", "deep tree", {"deep": deep(24)}, FEW_KEPT),
    (COPY, COPY, {"file": File(), "tree": TREE}, FEW_KEPT))


def run(report):
    for operation, name, due, kept in TRIALS:
        for world in worlds(report, (operation,), due, kept):
            if name.startswith("run"):
                report.check(f"whole {name}", lambda: world.run_whole() + world.check(in_hand=0))
            kills(report, world, name, most=20 if operation == COPY else 12)
            if not world.puts_back:
                kills_again(report, world, name)
