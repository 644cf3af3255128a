"""Programs save, append, drop and drag at every call of a run, and all the time: nothing that they wrote may be
lost."""

import contextlib
import mmap
import os
import random
import tempfile
import threading

from machine.canary import COPY, FEW_KEPT, FRESH, SMALL, World, remove, snapshot, worlds

FILES = 300
SAVES = 3000
BEGUN, ENDED = 0, 1
NEW = os.O_WRONLY | os.O_CREAT | os.O_EXCL
APPENDING = os.O_WRONLY | os.O_APPEND

# The writers are programs that go on writing into a folder while it is cleared. Each prepares up to its first yield and
# acts once behind it, during the run; where not all is written by then that was begun, it yields once more. What they
# wrote must lie somewhere afterwards.


class Hand:
    """Holds the directories open, as a program with its working directory there does. Files are top-level ones or
    lie in a tree; what it writes is no longer due by any rule."""

    def __init__(self, top, where, outside):
        tree = os.path.join(top, "tree")
        inner = os.path.join(tree, "inner")
        directory, self.name = {"item": (top, "file"), "tree": (tree, "a"), "inner": (inner, "b")}[where]
        self.item = os.path.join(top, "file" if where == "item" else "tree")
        self.directory, self.tree, self.inner, self.outside = (
            os.open(path, os.O_RDONLY) for path in (directory, tree, inner, outside))
        self.written = []

    def close(self):
        for descriptor in (self.directory, self.tree, self.inner, self.outside):
            os.close(descriptor)

    def text(self):
        self.written.append(f"saved by someone {len(self.written)}\n")
        return self.written[-1].encode()

    def open(self, name, flags):
        return open(os.open(name, flags, 0o644, dir_fd=self.directory), "wb", buffering=0)

    def make(self, name, date=FRESH * 10**9):
        """A new file, if the directory still takes one."""
        text = self.text()
        try:
            with self.open(name, NEW) as file:
                file.write(text)
                os.utime(file.fileno(), ns=(date, date))
                return True
        except FileNotFoundError:
            self.written.pop()
            return False

    def save(self, **date):
        if self.make(".saving", **date):
            os.rename(".saving", self.name, src_dir_fd=self.directory, dst_dir_fd=self.directory)

    def append(self, flags):
        with contextlib.suppress(FileNotFoundError, BlockingIOError), self.open(self.name, flags) as file:
            file.write(self.text())


def SavesByRename(hand):
    """As most editors do."""
    yield
    hand.save()


def SavesKeepingTheDate(hand):
    """As a program does that brings back another version of a file."""
    date = os.stat(hand.name, dir_fd=hand.directory).st_mtime_ns
    yield
    hand.save(date=date)


def Appends(hand):
    """Through a descriptor that it has held all the time."""
    with hand.open(hand.name, APPENDING) as file:
        yield
        file.write(hand.text())


def OpensAndAppends(hand):
    """Without waiting where someone holds a lease on the file."""
    yield
    hand.append(APPENDING | os.O_NONBLOCK)


def WaitsAndAppends(hand):
    """Waits until it may open the file."""
    yield
    thread = threading.Thread(target=hand.append, args=[APPENDING])
    thread.start()
    # Long enough for it to be inside its call, where a lease stops it.
    thread.join(0.002)
    try:
        if thread.is_alive():
            yield
    finally:
        thread.join()


def StoresInAMapping(hand):
    """The file itself it has closed."""
    file = os.open(hand.name, os.O_RDWR, dir_fd=hand.directory)
    mapping = mmap.mmap(file, 0)
    os.close(file)
    with mapping:
        yield
        text = hand.text()
        mapping[:len(text)] = text
        mapping.flush()


def DropsAFile(hand):
    yield
    hand.make("dropped")


def DropsADirectory(hand):
    """Whose files are old."""
    os.mkdir("dropped", dir_fd=hand.outside)
    descriptor = os.open("dropped/old", NEW, 0o644, dir_fd=hand.outside)
    os.write(descriptor, hand.text())
    os.utime(descriptor, (0, 0))
    os.close(descriptor)
    yield
    with contextlib.suppress(FileNotFoundError):
        os.rename("dropped", "dropped", src_dir_fd=hand.outside, dst_dir_fd=hand.directory)


def DragsADirectoryOut(hand):
    """With all that still lies in it."""
    yield
    with contextlib.suppress(FileNotFoundError):
        os.rename("inner", "dragged", src_dir_fd=hand.tree, dst_dir_fd=hand.outside)
        for name in os.listdir(hand.inner):
            with open(os.open(name, os.O_RDONLY, dir_fd=hand.inner)) as file:
                hand.written.append(file.read())
    yield  # It lies outside for good.


EVERYWHERE = (SavesByRename, SavesKeepingTheDate, Appends, OpensAndAppends, WaitsAndAppends, StoresInAMapping)
WRITERS = [(kind, where) for kind in EVERYWHERE for where in ("item", "tree", "inner")] + [
    (DropsAFile, "tree"), (DropsAFile, "inner"), (DropsADirectory, "tree"), (DropsADirectory, "inner"),
    (DragsADirectoryOut, "tree")]


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
