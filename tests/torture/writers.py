#!/usr/bin/env python3
"""Programs save, append, drop and drag at every call of a run, and all the time: nothing that they wrote may be
lost."""

import contextlib
import mmap
import os
import random
import tempfile

from machine import mounts
from machine.canary import COPY, FEW_KEPT, FRESH, SMALL, World, as_user, remove, snapshot
from machine.driver import become_user
from machine.report import Report
from machine.writing import WRITERS

FILES = 300
SAVES = 3000
BEGUN, ENDED = 0, 1


class WriterWorld(World):
    def __init__(self, tools, disposal):
        super().__init__(tools, disposal, SMALL, FEW_KEPT)
        self.aside = os.path.join(self.home, "Aside")

    @contextlib.contextmanager
    def prepared(self, operation):
        with super().prepared(operation) as perform:
            self.is_undoing = operation == COPY
            with as_user():
                if os.path.isdir(self.aside):
                    remove(self.aside)
                os.mkdir(self.aside)
            yield perform

    def problems_after_writing(self, result, written, stays=()):
        """`stays` is what was written while its item lay at its place: it keeps the item from going."""
        self.start_again()
        # What is written comes back under its own name, or beside what has taken that name.
        names = [name for name in os.listdir(self.folder) if name.startswith(("file", "tree", ".saving"))]
        problems = result.problems + self.check(touched={*SMALL, *names}, is_undoing=self.is_undoing, may_wait=self.is_undoing)
        there = "".join(entry.content for entry in snapshot(self.root).values())
        problems += [f"lost: {text!r}" for text in written if text not in there]
        here = "".join(entry.content for entry in snapshot(self.folder).values())
        problems += [f"changed, and went: {text!r}" for text in stays if text not in here]
        gone = {row["name"] for row in self.journal() if not self.is_undoing}
        if "tree" in gone & set(names):
            problems.append("the journal says that the tree has gone")
        return problems


def written_at(world, operation, kind, where, number):
    stays = []
    with world.prepared(operation) as perform:
        with as_user():
            writer = kind(world, os.path.join(world.trash, "files") if operation == COPY else world.folder, where)

        def act(_):
            was_in_place = os.path.lexists(writer.item)
            with as_user():
                writer.act()
            if was_in_place and writer.is_over() and operation != COPY:
                stays.extend(writer.written)
            return "go"

        with contextlib.closing(writer):
            result = perform(act=act, at=number)
    problems = world.problems_after_writing(result, writer.written, stays)
    return result.disturbed * bool(problems) + problems


def at_every_call(report, world, operation):
    calls = world.calls(operation)
    # What was written before the plan may be due. The time of the last start is the last thing that is read for it.
    planned = max((call.number for call in calls if call.path.startswith("/proc/s")), default=0)
    for kind, where in WRITERS:
        for number in report.windows(calls[planned:], world, 2):
            label = f"{operation}, {kind.__name__} {where} at {number}"
            report.check(label, written_at, world, operation, kind, where, number)


def saves_all_the_time(world, seed):
    """Another process saves by renaming, as fast as it can, into a directory of many files."""
    with world.prepared("delete"), as_user():
        for number in range(FILES):
            world.write(world.path("tree", "inner", str(number)))
    world.remember()
    children = []
    with mmap.mmap(-1, 2) as flags, tempfile.TemporaryFile() as log:
        def begin(call):
            if children or "/tree/" not in call.path:
                return "go"
            children.append(os.fork())
            if children[-1] == 0:
                save(world.path("tree", "inner"), seed, flags, log.fileno())
            while not flags[BEGUN]:
                pass
            return "go"

        # From the first file on that goes from the tree.
        result = world.run(act=begin, function="unlinkat", count=0)
        flags[ENDED] = 1
        for child in children:
            os.waitpid(child, 0)
        log.seek(0)
        saved = {line.split()[2]: line for line in log.read().decode().splitlines(keepends=True)}
    return world.problems_after_writing(result, saved.values())


def save(path, seed, flags, log):
    """Until told to end, or until the directory has gone."""
    become_user()
    generator = random.Random(seed)
    directory = os.open(path, os.O_RDONLY)
    for number in range(SAVES):
        if flags[ENDED]:
            break
        name = str(generator.randrange(FILES))
        text = f"saved as {name} {number}\n".encode()
        try:
            file = os.open(".saving", os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644, dir_fd=directory)
        except FileNotFoundError:
            break
        os.write(file, text)
        os.utime(file, (FRESH, FRESH))
        os.close(file)
        # What wasn't renamed yet may have been taken for an old file: it was never saved.
        with contextlib.suppress(FileNotFoundError):
            os.rename(".saving", name, src_dir_fd=directory, dst_dir_fd=directory)
            os.write(log, text)
        flags[BEGUN] = 1
    flags[BEGUN] = 1
    os._exit(0)


def main():
    report = Report(__doc__)
    reason = mounts.enter_own_mounts()
    if reason:
        report.skip(f"{COPY}: {reason}")
    for disposal, operations in (("bin", ("bin",) if reason else ("bin", COPY)), ("delete", ("delete",))):
        with WriterWorld(report.tools, disposal) as world:
            for operation in operations:
                at_every_call(report, world, operation)
    with WriterWorld(report.tools, "delete") as world:
        for seed in range(1, report.count(300, 2) + 1):
            report.check(f"saves all the time, seed {seed}", saves_all_the_time, world, seed)
    report.end()


if __name__ == "__main__":
    main()
