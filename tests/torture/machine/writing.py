"""Programs that go on writing into a folder while it is cleared. Each prepares before the run, acts once during it,
and then answers with what it wrote; that must lie somewhere afterwards."""

import contextlib
import mmap
import os
import threading

from machine.canary import FRESH

SAVED = "saved by someone "


class Writer:
    """Holds the directories open, as a program with its working directory there does. Files are top-level ones or
    lie in a tree; what it writes is no longer due by any rule."""

    def __init__(self, world, top, where):
        self.folder = os.open(top, os.O_RDONLY)
        self.tree = os.open(os.path.join(top, "tree"), os.O_RDONLY)
        self.inner = os.open(os.path.join(top, "tree", "inner"), os.O_RDONLY)
        self.outside = os.open(world.aside, os.O_RDONLY)
        self.directory, self.name = {"item": (self.folder, "file"), "tree": (self.tree, "a"),
                                     "inner": (self.inner, "b")}[where]
        self.item = os.path.join(top, "file" if where == "item" else "tree")
        self.written = []
        self.prepare()

    def prepare(self):
        pass

    def close(self):
        for descriptor in (self.folder, self.tree, self.inner, self.outside):
            os.close(descriptor)

    def is_over(self):
        """Whether all is written that was begun."""
        return True

    def text(self):
        self.written.append(f"{SAVED}{type(self).__name__} {len(self.written)}\n")
        return self.written[-1].encode()

    def open(self, name, flags):
        return os.open(name, flags, 0o644, dir_fd=self.directory)

    def make(self, name, fresh=True):
        """A new file, if the directory still takes one."""
        text = self.text()
        try:
            descriptor = self.open(name, os.O_WRONLY | os.O_CREAT | os.O_EXCL)
        except FileNotFoundError:
            self.written.pop()
            return False
        os.write(descriptor, text)
        if fresh:
            os.utime(descriptor, (FRESH, FRESH))
        os.close(descriptor)
        return True

    def rename(self, name, other):
        os.rename(name, other, src_dir_fd=self.directory, dst_dir_fd=self.directory)


class SavesByRename(Writer):
    """As most editors do."""

    def act(self):
        if self.make(".saving"):
            self.rename(".saving", self.name)


class SavesKeepingTheDate(Writer):
    """As a program does that brings back another version of a file."""

    def prepare(self):
        self.date = os.stat(self.name, dir_fd=self.directory).st_mtime_ns

    def act(self):
        if self.make(".saving", fresh=False):
            os.utime(".saving", ns=(self.date, self.date), dir_fd=self.directory)
            self.rename(".saving", self.name)


class Appends(Writer):
    """Through a descriptor that it has held all the time."""

    def prepare(self):
        self.file = self.open(self.name, os.O_WRONLY | os.O_APPEND)

    def act(self):
        os.write(self.file, self.text())

    def close(self):
        os.close(self.file)
        super().close()


class OpensAndAppends(Writer):
    """Without waiting where someone holds a lease on the file."""

    waiting = os.O_NONBLOCK

    def act(self):
        with contextlib.suppress(FileNotFoundError, BlockingIOError):
            file = self.open(self.name, os.O_WRONLY | os.O_APPEND | self.waiting)
            os.write(file, self.text())
            os.close(file)


class WaitsAndAppends(OpensAndAppends):
    """Waits until it may open the file."""

    waiting = 0

    def act(self):
        self.thread = threading.Thread(target=super().act)
        self.thread.start()
        # Long enough for it to be inside its call, where a lease stops it.
        self.thread.join(0.002)

    def is_over(self):
        return not self.thread.is_alive()

    def close(self):
        if hasattr(self, "thread"):
            self.thread.join()
        super().close()


class StoresInAMapping(Writer):
    """The file itself it has closed."""

    def prepare(self):
        file = self.open(self.name, os.O_RDWR)
        self.mapping = mmap.mmap(file, 0)
        os.close(file)

    def act(self):
        text = self.text()
        self.mapping[:len(text)] = text
        self.mapping.flush()

    def close(self):
        self.mapping.close()
        super().close()


class DropsAFile(Writer):
    def act(self):
        self.make("dropped")


class DropsADirectory(Writer):
    """Whose files are old."""

    def prepare(self):
        os.mkdir("dropped", dir_fd=self.outside)
        descriptor = os.open("dropped/old", os.O_WRONLY | os.O_CREAT, 0o644, dir_fd=self.outside)
        os.write(descriptor, self.text())
        os.utime(descriptor, (0, 0))
        os.close(descriptor)

    def act(self):
        with contextlib.suppress(FileNotFoundError):
            os.rename("dropped", "dropped", src_dir_fd=self.outside, dst_dir_fd=self.directory)


class DragsADirectoryOut(Writer):
    """With all that still lies in it."""

    def is_over(self):
        return False  # It lies outside for good.

    def act(self):
        with contextlib.suppress(FileNotFoundError):
            os.rename("inner", "dragged", src_dir_fd=self.tree, dst_dir_fd=self.outside)
            for name in os.listdir(self.inner):
                with open(name, opener=lambda name, flags: os.open(name, flags, dir_fd=self.inner)) as file:
                    self.written.append(file.read())


EVERYWHERE = (SavesByRename, SavesKeepingTheDate, Appends, OpensAndAppends, WaitsAndAppends, StoresInAMapping)
WRITERS = [(kind, where) for kind in EVERYWHERE for where in ("item", "tree", "inner")] + [
    (DropsAFile, "tree"), (DropsAFile, "inner"), (DropsADirectory, "tree"), (DropsADirectory, "inner"),
    (DragsADirectoryOut, "tree")]
