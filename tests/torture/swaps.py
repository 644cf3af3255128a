#!/usr/bin/env python3
"""Another process puts links or other directories in the place of the folder, what lies above it, its items,
what lies in them, and the Trash, at every call of a run and of a put-back: nothing that was put there may go."""

import contextlib
import itertools
import mmap
import os
import random
import tempfile

from machine.canary import (FEW_KEPT, OPERATIONS, SMALL, File, World, as_user, contents, contents_of, differences,
                            disposal_of, remove, snapshot)
from machine.driver import become_user
from machine.report import Report
from machine.swap import Swap

METHODS = ("link", "exchange")
TRASH = ("files", "info", "Trash")


def fresh(entries):
    return {name: fresh(part) if isinstance(part, dict) else part._replace(fresh=True)
            for name, part in entries.items()}


# The folder and what lies above it are exchanged for directories whose items are due but not tagged; all else for
# what no rule takes.
DECOYS = {
    "folder": SMALL, "above": {"Temporary": SMALL}, "file": File(fresh=True), "tree": fresh(SMALL["tree"]),
    "inner": fresh(SMALL["tree"]["inner"]), "a": File(fresh=True),
    "files": {"file": File(), "tree": {"a": File()}}, "info": {"other.trashinfo": File()},
    "Trash": {"files": {"other": File()}, "info": {}}}


class SwapWorld(World):
    def __init__(self, tools, disposal):
        super().__init__(tools, disposal, SMALL, FEW_KEPT)
        self.decoys = os.path.join(self.home, "Decoys")

    def places(self):
        trash = {"files": "files", "info": "info", "Trash": ""}
        inside = {"file": "file", "tree": "tree", "inner": "tree/inner", "a": "tree/a"}
        return {"folder": self.folder, "above": os.path.dirname(self.folder),
                **{name: self.path(path) for name, path in inside.items()},
                **{name: os.path.join(self.trash, path).rstrip("/") for name, path in trash.items()}}

    def prepare(self, operation):
        self.reset()
        with as_user():
            if os.path.isdir(self.decoys):
                remove(self.decoys)
            os.mkdir(self.decoys)
            self.put(self.decoys, DECOYS)
            # As a Trash that was used before.
            for part in ("files", "info"):
                os.makedirs(os.path.join(self.trash, part), mode=0o700, exist_ok=True)
        if operation == "put-back":
            self.run()
        self.decoys_before = snapshot(self.decoys)

    def swap(self, name, method, operation):
        place = self.places()[name]
        if operation == "put-back" and name in ("file", "tree", "inner", "a"):
            place = place.replace(self.folder, os.path.join(self.trash, "files"))
        # The folder is the same wherever it lies, and the Trash of whoever holds it open too.
        may_change = name in ("folder", "above", *TRASH)
        return Swap(place, os.path.join(self.decoys, name), method, may_change)

    def perform(self, operation, **settings):
        return self.undo(**settings) if operation == "put-back" else self.run(**settings)

    def problems_after_swap(self, result, swap, operation):
        name = os.path.basename(swap.decoy)
        with as_user():
            swap.undo_for_good()
            self.follow_again()
        self.start_again()
        if swap.method == "exchange" and name in TRASH or operation == "put-back" and name in ("file", "tree"):
            # What stands in the Trash's place is the Trash, and what lies in the item's place there is the item.
            return result.problems + (self.lost(self.before, self.decoys_before) if self.disposal == "bin" else [])
        problems = result.problems + swap.problems
        problems += differences("decoy", contents_of(self.decoys_before), contents(self.decoys))
        refuges = {"folder": [swap.refuge], "above": [os.path.join(swap.refuge, os.path.basename(self.folder))]}
        return problems + self.check(is_undoing=operation == "put-back", also_at=refuges.get(name, ()))


def swapped(world, operation, name, method, changes, **windows):
    """Performs an operation; at the calls of the windows the swap is done or undone where `changes` says so."""
    world.prepare(operation)
    calls = []
    with contextlib.closing(world.swap(name, method, operation)) as swap:
        def act(call):
            if changes():
                calls.append(f"{name} swapped by {method} at {call.function} {call.path}")
                with as_user():
                    swap.undo() if swap.is_done else swap.do()
            return "go"

        result = world.perform(operation, act=act, **windows)
        problems = world.problems_after_swap(result, swap, operation)
    return len(calls), calls * bool(problems) + problems


def at_every_call(report, world, operation, names):
    world.prepare(operation)
    calls = world.perform(operation, action="trace").calls
    first = next(number for number, call in enumerate(calls) if call.path.startswith(world.folder))
    for name, method, count in itertools.product(names, METHODS, (1, 2)):
        for number in report.windows(calls[first:], world, 1):
            label = f"{operation}, {name} by {method} {'for good' if count == 1 else 'once'} at {number}"
            report.check(label, lambda: swapped(world, operation, name, method, lambda: True, at=number, count=count)[1])


def swapped_at_random(world, operation, names, seed):
    generator = random.Random(seed)
    name, method = generator.choice(names), generator.choice(METHODS)
    often = generator.choice((0.02, 0.1, 0.5))
    return swapped(world, operation, name, method, lambda: generator.random() < often, count=0)


def swapped_all_the_time(world, operation, names, seed):
    """Another process exchanges both as fast as it can, and ends with everything in its place."""
    name = names[seed % len(names)]
    world.prepare(operation)
    with mmap.mmap(-1, 1) as ended, contextlib.closing(world.swap(name, "exchange", operation)) as swap, \
            tempfile.TemporaryFile() as count:
        child = os.fork()
        if child == 0:
            become_user()
            swap.exchange_until(lambda: ended[0], random.Random(seed))
            os.write(count.fileno(), str(swap.number).encode())
            os._exit(0)
        result = world.perform(operation)
        ended[0] = 1
        os.waitpid(child, 0)
        count.seek(0)
        return int(count.read()), world.problems_after_swap(result, swap, operation)


def until(report, number, usual, how, label, *arguments):
    """Goes on with one seed after the other until there were so many swaps; an unwanted seed stands for the usual
    number."""
    done = seed = 0
    while done < number:
        seed += 1
        if not report.wants(f"{label} with seed {seed}"):
            done += usual
            continue
        swaps, problems = how(*arguments, seed)
        done += max(swaps, 1)
        report.case(f"{label} with seed {seed}", problems, swaps)


def main():
    report = Report(__doc__)
    for operation in OPERATIONS:
        names = [name for name in DECOYS if operation != "delete" or name not in TRASH]
        with SwapWorld(report.tools, disposal_of(operation)) as world:
            at_every_call(report, world, operation, names)
            until(report, report.count(33_400, 40), 10, swapped_at_random, f"{operation}, at random",
                  world, operation, names)
            until(report, report.count(100_000, 5_000), 500, swapped_all_the_time, f"{operation}, all the time",
                  world, operation, names)
    report.end()


if __name__ == "__main__":
    main()
