"""Another process puts links or other directories in the place of the folder, what lies above it, its items,
what lies in them, and the Trash, at every call of a run and of a put-back: nothing that was put there may go."""

import collections
import contextlib
import ctypes
import itertools
import mmap
import os
import random
import tempfile

from machine.canary import (FEW_KEPT, FRESH, OPERATIONS, SMALL, File, World, contents, differences, portable,
                            remove, snapshot, worlds)

METHODS = ("link", "exchange")
TRASH = ("files", "info", "Trash")
RENAME_EXCHANGE = 2
_libc = ctypes.CDLL(None, use_errno=True)


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


class Swap:
    """Of one entry for a decoy that lies elsewhere: by a link to the decoy in its place, or by exchanging both.
    Holds its directory open, so it finds the entry wherever that directory has gone meanwhile. Nothing in the
    entry may go while it lies elsewhere, unless it is one that may change there."""

    def __init__(self, path, decoy, method, may_change=False):
        self.name = os.path.basename(path)
        self.decoy = decoy
        self.method = method
        self.may_change = may_change
        self.directory = os.open(os.path.dirname(path), os.O_PATH)
        self.decoys = os.open(os.path.dirname(decoy), os.O_PATH)
        # Where the entry lies while the decoy stands in its place.
        self.refuge = decoy if method == "exchange" else decoy + " aside"
        self.is_done = False
        self.problems = []

    def close(self):
        os.close(self.directory)
        os.close(self.decoys)

    def exchange(self):
        """The two entries change places in one step."""
        if _libc.renameat2(self.directory, os.fsencode(self.name), self.decoys,
                           os.fsencode(os.path.basename(self.decoy)), RENAME_EXCHANGE) != 0:
            code = ctypes.get_errno()
            raise OSError(code, os.strerror(code), self.name)

    def do(self):
        """Where the entry has gone there is nothing to swap."""
        with contextlib.suppress(FileNotFoundError):
            if self.method == "exchange":
                self.exchange()
            else:
                os.rename(self.name, os.path.basename(self.refuge), src_dir_fd=self.directory, dst_dir_fd=self.decoys)
                os.symlink(self.decoy, self.name, dir_fd=self.directory)
                os.utime(self.name, (FRESH, FRESH), dir_fd=self.directory, follow_symlinks=False)
            self.is_done = True
            self._moved = contents(self.refuge)

    def undo(self):
        """What a removal has taken just now to look at it isn't there for the moment: a later call finds it."""
        if not self.is_done:
            return
        if not self.may_change:
            self.problems += differences(f"moved away, {self.name}", self._moved, contents(self.refuge))
        with contextlib.suppress(FileNotFoundError):
            if self.method == "exchange":
                self.exchange()
            else:
                os.readlink(self.name, dir_fd=self.directory)
                os.unlink(self.name, dir_fd=self.directory)
                os.rename(os.path.basename(self.refuge), self.name, src_dir_fd=self.decoys, dst_dir_fd=self.directory)
            self.is_done = False


class SwapWorld(World):
    def reset(self):
        super().reset()
        self.decoys = os.path.join(self.home, "Decoys")
        remove(self.decoys)
        os.mkdir(self.decoys)
        self.put(self.decoys, DECOYS)
        self.decoys_before = snapshot(self.decoys)
        # As a Trash that was used before.
        for part in ("files", "info"):
            os.makedirs(os.path.join(self.trash, part), mode=0o700)

    def swap(self, name, method):
        top = os.path.join(self.trash, "files") if self.puts_back else self.folder
        tree = os.path.join(top, "tree")
        place = {"folder": self.folder, "above": os.path.dirname(self.folder), "file": os.path.join(top, "file"),
                 "tree": tree, "inner": os.path.join(tree, "inner"), "a": os.path.join(tree, "a"),
                 "Trash": self.trash}.get(name) or os.path.join(self.trash, name)
        # The folder is the same wherever it lies, and the Trash of whoever holds it open too.
        may_change = name in ("folder", "above", *TRASH)
        return contextlib.closing(Swap(place, os.path.join(self.decoys, name), method, may_change))

    def problems_after_swap(self, result, swap):
        name = os.path.basename(swap.decoy)
        swap.undo()
        if swap.is_done:
            swap.problems.append(f"what was put in the place of {swap.name} isn't there any more")
        self.follow_again()
        self.start_again()
        if swap.method == "exchange" and name in TRASH or self.puts_back and name in ("file", "tree"):
            # What stands in the Trash's place is the Trash, and what lies in the item's place there is the item.
            return result.problems + (self.lost(self.before, self.decoys_before) if self.disposal == "bin" else [])
        problems = result.problems + swap.problems
        problems += differences("decoy", portable(self.decoys_before), contents(self.decoys))
        refuges = {"folder": [swap.refuge], "above": [os.path.join(swap.refuge, os.path.basename(self.folder))]}
        return problems + self.check(also_at=refuges.get(name, ()))

    def lost(self, *snapshots):
        """Of snapshots of before what doesn't lie anywhere any more, or twice."""
        there = collections.Counter(entry.content for entry in snapshot(self.root).values() if entry.content)
        return [f"{path} lies in {there[entry.content]} places" for before in snapshots
                for path, entry in before.items() if entry.content and there[entry.content] != 1]


def swapped(world, name, method, changes, **windows):
    """Performs an operation; at the calls of the windows the swap is done or undone where `changes` says so."""
    calls = []
    with world.prepared(), world.swap(name, method) as swap:
        def act(call):
            if changes():
                calls.append(f"{name} swapped by {method} at {call.function} {call.path}")
                swap.undo() if swap.is_done else swap.do()

        problems = world.problems_after_swap(world.perform(act=act, **windows), swap)
    return len(calls), calls * bool(problems) + problems


def at_every_call(report, world, names):
    calls = world.calls()
    first = next(number for number, call in enumerate(calls) if call.path.startswith(world.folder))
    for name, method, count in itertools.product(names, METHODS, (1, 2)):
        for number in report.windows(calls[first:], world, 1):
            how = "for good" if count == 1 else "once"
            label = f"{world.operation}, {name} by {method} {how} at {number}"
            report.check(label, lambda: swapped(world, name, method, lambda: True, at=number, count=count)[1])


def swapped_at_random(world, names, seed):
    generator = random.Random(seed)
    name, method = generator.choice(names), generator.choice(METHODS)
    often = generator.choice((0.02, 0.1, 0.5))
    return swapped(world, name, method, lambda: generator.random() < often, count=0)


def swapped_all_the_time(world, names, seed):
    """Another process exchanges both as fast as it can, and ends with everything in its place."""
    with world.prepared(), mmap.mmap(-1, 1) as ended, world.swap(names[seed % len(names)], "exchange") as swap, \
            tempfile.TemporaryFile() as count:
        child = os.fork()
        if child == 0:
            os.write(count.fileno(), str(exchange_until(lambda: ended[0], swap, random.Random(seed))).encode())
            os._exit(0)
        result = world.perform()
        ended[0] = 1
        os.waitpid(child, 0)
        count.seek(0)
        return int(count.read()), world.problems_after_swap(result, swap)


def exchange_until(is_over, swap, generator):
    """Now and then pauses, the other way round or not; ends as it began, as far as both are still there. Answers how
    often."""
    for number in itertools.count():
        if number % 2 == 0 and is_over():
            return number
        try:
            swap.exchange()
        except FileNotFoundError:
            return number
        for _ in range(generator.randrange(200)):
            pass


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


def run(report):
    for world in worlds(report, OPERATIONS, SMALL, FEW_KEPT, kind=SwapWorld):
        names = [name for name in DECOYS if world.operation != "delete" or name not in TRASH]
        at_every_call(report, world, names)
        until(report, report.count(33_400, 40), 10, swapped_at_random, f"{world.operation}, at random", world, names)
        until(report, report.count(100_000, 5_000), 500, swapped_all_the_time, f"{world.operation}, all the time",
              world, names)
