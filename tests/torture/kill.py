#!/usr/bin/env python3
"""Kills the program at each of its calls of the file system and the database, and at any moment, and looks at
what the next start makes of it."""

import contextlib
import os

from machine import mounts
from machine.canary import FAR_FUTURE, REMAINS, TREE, File, World
from machine.report import Report

KEPT = {".hidden item": File(), "fresh": File(fresh=True)}


def after(world, result, is_undoing):
    """What is wrong once the program has started again, and once it has run to the end."""
    again = world.start_again()
    problems = result.problems + again.problems + [f"next start: {line}" for line in again.of("error")]
    problems += world.check(is_undoing=is_undoing, may_wait=True)
    if is_undoing:
        # Another try opens the Bin, and lays back what had been taken there.
        world.undo()
        problems += world.check(is_undoing=True, may_wait=True)
        problems += [f"left in the Bin: {name}" for name in os.listdir(world.trash) if name.startswith(REMAINS)]
    else:
        problems += [f"next run: {problem}" for problem in world.run_whole() + world.check()]
    if problems and result.calls:
        problems.insert(0, f"killed at {result.calls[0].function} {result.calls[0].path}")
    return problems


def kills(report, world, name, prepare, perform, is_undoing):
    prepare()
    calls = len(perform(action="trace").calls)
    cases = [(f"{name} at {number}", {"action": "kill", "at": number})
             for number in report.some(range(1, calls + 1), 12)]
    cases += [(f"{name} at any moment at {number}", {"killed_after": report.random.uniform(0, 0.03)})
              for number in range(report.count(170, 2))]
    for label, how in cases:
        if report.wants(label):
            prepare()
            report.case(label, after(world, perform(**how), is_undoing))


def kills_again(report, world, name):
    """A next start that is killed too while it gives back what a killed run had taken, or puts records right."""
    world.reset()
    calls = [call for call in world.run(action="trace").calls if call.function in ("renameat2", "unlinkat", "mkdirat")]
    for first in report.some(calls, 3, full=25):
        world.reset()
        world.run(action="kill", at=first.number)
        count = len(world.drive(("status", 1, FAR_FUTURE), action="trace").calls)
        for number in report.some(range(1, count + 1), 3, full=40):
            label = f"{name} again at {first.number} and {number}"
            if report.wants(label):
                world.reset()
                world.run(action="kill", at=first.number)
                result = world.drive(("status", 1, FAR_FUTURE), action="kill", at=number)
                problems = after(world, result, False)
                report.case(label, [f"first killed at {first.function} {first.path}"] * bool(problems) + problems)


def deep(levels):
    return {"file": File(), "twin": File(), **({"down": deep(levels - 1)} if levels else {})}


def kills_of_copies(report):
    """The Bin lies on another mount than the folder by then, so an item comes back as a copy."""
    reason = mounts.enter_own_mounts()
    if reason:
        return report.skip(f"put-back by a copy: {reason}")
    with World(report.tools, "bin", {"file": File(), "tree": TREE}, KEPT) as world, contextlib.ExitStack() as stack:
        def prepare():
            stack.close()
            world.reset()
            world.run()
            stack.enter_context(world.on_another_mount())

        kills(report, world, "put-back by a copy", prepare, world.undo, True)


def main():
    report = Report(__doc__)
    for disposal in ("bin", "delete"):
        with World(report.tools, disposal) as world:
            if report.wants(f"whole run to {disposal}"):
                report.case(f"whole run to {disposal}", world.run_whole() + world.check(in_hand=0))
            kills(report, world, f"run to {disposal}", world.reset, world.run, False)
            kills_again(report, world, f"run to {disposal}")
            if disposal == "bin":
                def binned():
                    world.reset()
                    world.run()
                kills(report, world, "put-back", binned, world.undo, True)
    with World(report.tools, "delete", {"deep": deep(24)}, KEPT) as world:
        kills(report, world, "deep tree", world.reset, world.run, False)
        kills_again(report, world, "deep tree")
    kills_of_copies(report)
    report.end()


if __name__ == "__main__":
    main()
