"""Programs save, append, drop and drag at every call of a run, and all the time: nothing that they wrote may be
lost."""

import contextlib
import mmap
import os
import random
import tempfile

from machine.canary import COPY, FEW_KEPT, FRESH, SMALL, World, remove, snapshot, worlds
from machine.writing import WRITERS, Hand

FILES = 300
SAVES = 3000
BEGUN, ENDED = 0, 1


class WriterWorld(World):
    def reset(self):
        super().reset()
        self.aside = os.path.join(self.home, "Aside")
        remove(self.aside)
        os.mkdir(self.aside)

    def problems_after_writing(self, result, written, stays=()):
        """`stays` is what was written while its item lay at its place: it keeps the item from going."""
        self.start_again()
        # What is written comes back under its own name, or beside what has taken that name.
        names = [name for name in os.listdir(self.folder) if name.startswith(("file", "tree", ".saving"))]
        problems = result.problems + self.check(touched={*SMALL, *names}, may_wait=self.puts_back)
        there = "".join(entry.content for entry in snapshot(self.root).values())
        problems += [f"lost: {text!r}" for text in written if text not in there]
        here = "".join(entry.content for entry in snapshot(self.folder).values())
        problems += [f"changed, and went: {text!r}" for text in stays if text not in here]
        gone = {row["name"] for row in self.journal() if not self.puts_back}
        if "tree" in gone & set(names):
            problems.append("the journal says that the tree has gone")
        return problems


def written_at(world, kind, where, number):
    stays = []
    with world.prepared():
        top = os.path.join(world.trash, "files") if world.puts_back else world.folder
        with contextlib.closing(Hand(top, where, world.aside)) as hand, contextlib.closing(kind(hand)) as writer:
            next(writer)

            def act(_):
                was_in_place = os.path.lexists(hand.item)
                is_over = next(writer, True)
                if was_in_place and is_over and not world.puts_back:
                    stays.extend(hand.written)

            result = world.perform(act=act, at=number)
    problems = world.problems_after_writing(result, hand.written, stays)
    return result.disturbed * bool(problems) + problems


def at_every_call(report, world):
    calls = world.calls()
    # What was written before the plan may be due. The time of the last start is the last thing that is read for it.
    planned = max((call.number for call in calls if call.path.startswith(("/proc/stat", "/proc/sys/"))), default=0)
    for kind, where in WRITERS:
        for number in report.windows(calls[planned:], world, 2):
            label = f"{world.operation}, {kind.__name__} {where} at {number}"
            report.check(label, written_at, world, kind, where, number)


def saves_all_the_time(world, seed):
    """Another process saves by renaming, as fast as it can, into a directory of many files."""
    with world.prepared():
        for number in range(FILES):
            world.write(world.path("tree", "inner", str(number)))
    world.remember()
    children = []
    with mmap.mmap(-1, 2) as flags, tempfile.TemporaryFile() as log:
        def begin(call):
            if children or "/tree/" not in call.path:
                return
            children.append(os.fork())
            if children[-1] == 0:
                save(world.path("tree", "inner"), seed, flags, log.fileno())
            while not flags[BEGUN]:
                pass

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


def run(report):
    for world in worlds(report, ("bin", COPY, "delete"), SMALL, FEW_KEPT, kind=WriterWorld):
        at_every_call(report, world)
    for world in worlds(report, ("delete",), SMALL, FEW_KEPT, kind=WriterWorld):
        for seed in range(1, report.count(300, 2) + 1):
            report.check(f"saves all the time, seed {seed}", saves_all_the_time, world, seed)
