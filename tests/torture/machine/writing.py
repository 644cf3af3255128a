"""Programs that go on writing into a folder while it is cleared. Each prepares up to its first yield and acts once
behind it, during the run; where not all is written by then that was begun, it yields once more. What they wrote must
lie somewhere afterwards."""

import contextlib
import mmap
import os
import threading

from machine.canary import FRESH

NEW = os.O_WRONLY | os.O_CREAT | os.O_EXCL
APPENDING = os.O_WRONLY | os.O_APPEND


class Hand:
    """Holds the directories open, as a program with its working directory there does. Files are top-level ones or
    lie in a tree; what it writes is no longer due by any rule."""

    def __init__(self, top, where, outside):
        self.tree = os.path.join(top, "tree")
        self.inner = os.path.join(self.tree, "inner")
        directory, self.name = {"item": (top, "file"), "tree": (self.tree, "a"), "inner": (self.inner, "b")}[where]
        self.item = os.path.join(top, "file" if where == "item" else "tree")
        self.directory, self.tree, self.inner, self.outside = (
            os.open(path, os.O_RDONLY) for path in (directory, self.tree, self.inner, outside))
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
