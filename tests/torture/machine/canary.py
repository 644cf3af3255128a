"""A home with a Temporary folder and things beside it that no run may ever touch, and the check that nothing
was lost, nothing went that shouldn't, and nothing went without its record."""

import collections
import contextlib
import hashlib
import os
import shutil
import sqlite3
import stat
import tempfile
import urllib.parse

from machine import mounts
from machine.driver import FAR_FUTURE, Driver, as_root

FRESH = FAR_FUTURE + 10_000_000
TAGS = "user.xdg.tags"
REMAINS = (".tidemar-taken-", ".tidemar-copy-", ".tidemar-")

File = collections.namedtuple("File", "mode fresh sparse", defaults=(0o644, False, False))
Link = collections.namedtuple("Link", "target")
HardLink = collections.namedtuple("HardLink", "to")
Pipe = collections.namedtuple("Pipe", "")
Directory = collections.namedtuple("Directory", "entries mode", defaults=(0o755,))

TREE = {"a": File(), "inner": {"b": File(0o600), "deeper": {"c": File(), ".out of sight": File()}},
        "nothing": {}, "to a": Link("a"), "to nowhere": Link("nowhere")}

# What a run takes, and what stays for one reason or another.
DUE = {
    "letter.txt": File(), "tree": TREE, "Program.AppDir": {"AppRun": File(0o755), "usr": {"lib": File()}},
    "to precious": Link("../../../outside/precious"), "to a directory": Link("../../../outside/album"),
    "shared": HardLink("outside/shared"), "pipe": Pipe(), "-rf": File(), "odd \n\"'%41 \udcff": File(),
    "sparse": File(sparse=True),
    "twins": {"one": File(), "two": HardLink("home/Papers/Temporary/twins/one"), "aside": {"three": File()}}}
KEPT = {
    ".hidden item": File(), ".hidden": File(), "listed": File(), "fresh": File(fresh=True),
    "fresh tree": {"old": File(), "in it": {"fresh": File(fresh=True)}},
    "unreadable": Directory({"in it": File()}, 0o000)}
# Less of both, where every call of a run is a case.
SMALL = {"file": File(), "tree": {"a": File(), "inner": {"b": File(), "c": File()}}}
FEW_KEPT = {".hidden item": File(), "fresh": File(fresh=True)}
OUTSIDE = {"precious": File(0o400), "shared": File(), "album": {"picture": File(), "more": {"picture": File()}},
           "empty": {}, ".hidden": File(), "to": Link("precious")}

OPERATIONS = ("bin", "delete", "put-back")
COPY = "put-back by a copy"

Entry = collections.namedtuple("Entry", "kind mode content modified changed attributes")


def entry_of(path):
    values = os.lstat(path)
    kind = stat.S_IFMT(values.st_mode)
    content, attributes = "", ()
    if kind == stat.S_IFREG:
        with open(path, "rb") as file:
            data = file.read()
        content = data.decode() if len(data) < 1000 else hashlib.sha256(data).hexdigest()
    elif kind == stat.S_IFLNK:
        content = os.readlink(path)
    # Some file systems keep none.
    with contextlib.suppress(OSError):
        if kind != stat.S_IFLNK:
            attributes = tuple((key, os.getxattr(path, key)) for key in sorted(os.listxattr(path)))
    return Entry(kind, stat.S_IMODE(values.st_mode), content, values.st_mtime_ns, values.st_ctime_ns, attributes)


@as_root()
def snapshot(top):
    """Of an entry and all that lies in it, by the path relative to it; the entry itself under "."."""
    found = {".": entry_of(top)}
    for directory, directories, files in () if os.path.islink(top) else os.walk(top):
        for name in directories + files:
            path = os.path.join(directory, name)
            found[os.path.relpath(path, top)] = entry_of(path)
    return found


def portable(entries):
    """Of a snapshot what is the same wherever its entry lies."""
    return {path: entry._replace(changed=0, modified=entry.modified if entry.kind == stat.S_IFREG else 0)
            for path, entry in entries.items()}


def parts(entries, name):
    """The same of one top-level entry."""
    return portable({path[len(name):]: entry for path, entry in entries.items()
                     if path == name or path.startswith(name + "/")})


def contents(path):
    """The same of what lies there now; nothing where there is nothing."""
    return portable(snapshot(path)) if os.path.lexists(path) else {}


def differences(what, before, now):
    return [f"{what} {path} was {before.get(path)} and is {now.get(path)}"
            for path in sorted(before.keys() | now.keys()) if before.get(path) != now.get(path)]


def worlds(report, operations, *arguments, kind=None, **options):
    """One for each operation that can be tried here."""
    for operation in operations:
        reason = operation == COPY and mounts.enter_own_mounts()
        if reason:
            report.skip(f"{COPY}: {reason}")
        else:
            with (kind or World)(report.tools, operation, *arguments, **options) as world:
                yield world


class World:
    """Lies in a directory, by default a temporary one; the folder may lie on a drive of its own. What is tried in it
    is one operation: a run to the Bin or one that deletes, or putting back what a run has taken."""

    def __init__(self, tools, operation, due=DUE, kept=KEPT, directory=None, drive=None):
        self.root = os.path.realpath(tempfile.mkdtemp(prefix="tidemar-torture-", dir=directory))
        self.operation = operation
        self.disposal = "delete" if operation == "delete" else "bin"
        self.puts_back = operation not in ("bin", "delete")
        self.perform = self.undo if self.puts_back else self.run
        self.due = due
        # Without another's rights nobody could compare it.
        self.kept = {name: kept[name] for name in kept if name != "unreadable" or 0 in os.getresuid()}
        self.home = os.path.join(self.root, "home")
        self.folder = os.path.join(drive or self.home, "Papers", "Temporary")
        self.untagged = os.path.join(self.home, "Papers", "Untagged")
        self.outside = os.path.join(self.root, "outside")
        self.data = os.path.join(self.home, ".local", "share")
        self.trash = os.path.join(drive, f".Trash-{os.getuid()}") if drive else os.path.join(self.data, "Trash")
        self.database = os.path.join(self.data, "Tidemar", "tidemar.sqlite")
        self.drive = Driver(*tools, self.home, self.database)
        self._count = 0
        self._tags = b""
        for path in (self.folder, self.untagged, os.path.dirname(self.database), self.outside,
                     os.path.join(self.root, "run")):
            os.makedirs(path, mode=0o700, exist_ok=True)
        self.put(self.outside, OUTSIDE)
        self.put(self.untagged, {"old": File(), "tree": TREE})
        rules = (1, None, 0, 0, self.disposal, None)
        result = self.drive(("add", self.folder, 0), ("rules", 1, *rules), ("tag", 1, 1, 0),
                            ("add", self.untagged, 0), ("rules", 2, *rules))
        assert not result.of("error"), result.lines
        # Some file systems keep none.
        with contextlib.suppress(OSError):
            self._tags = os.getxattr(self.folder, TAGS)
        self._prepared = self.database + ".prepared"
        shutil.copyfile(self.database, self._prepared)
        self.reset()

    def __enter__(self):
        return self

    @as_root()
    def __exit__(self, *_):
        shutil.rmtree(self.root, ignore_errors=True)

    def path(self, *names):
        return os.path.join(self.folder, *names)

    # Building.

    def put(self, directory, entries):
        """Every file gets content of its own, by which it is known wherever it comes to lie."""
        for name, part in entries.items():
            path = os.path.join(directory, name)
            if isinstance(part, (dict, Directory)):
                inside, mode = part if isinstance(part, Directory) else Directory(part)
                os.mkdir(path)
                self.put(path, inside)
                os.chmod(path, mode)
            elif isinstance(part, Link):
                os.symlink(part.target, path)
            elif isinstance(part, HardLink):
                os.link(os.path.join(self.root, part.to), path)
            elif isinstance(part, Pipe):
                os.mkfifo(path)
            else:
                self.write(path, part)

    def write(self, path, part=File()):
        self._count += 1
        content = f"{self._count} {urllib.parse.quote(os.fsencode(path))}\n"
        if path == self.path(".hidden"):
            content = "listed\n"
        with open(path, "w") as file:
            file.write(content)
            if part.sparse:
                file.truncate(1 << 20)
        os.chmod(path, part.mode)
        if part.fresh:
            os.utime(path, (FRESH, FRESH))

    def reset(self):
        """The world as it was made, but for what lies in the folder: that is made anew."""
        for directory in (self.folder, self.trash):
            with contextlib.suppress(FileNotFoundError):
                for name in os.listdir(directory):
                    remove(os.path.join(directory, name))
        for ending in ("-journal", "-wal", "-shm"):
            remove(self.database + ending)
        # In place: the file stays the one that the directory knows.
        shutil.copyfile(self._prepared, self.database)
        self.put(self.folder, self.due | self.kept)
        if self._tags:
            os.setxattr(self.folder, TAGS, self._tags)
        self.remember()

    def follow_again(self):
        """Undoes that the engine took another directory for the folder, which had lain in its place."""
        with contextlib.closing(sqlite3.connect(self.database)) as connection, connection:
            connection.execute("ATTACH ? AS prepared", (self._prepared,))
            connection.execute('UPDATE "folder" SET ("path", "bookmark") = (SELECT "path", "bookmark" FROM '
                               'prepared."folder" AS old WHERE old."id" = "folder"."id")')

    def remember(self):
        """What is there now is what the check compares with."""
        self.before = snapshot(self.folder)
        self.canaries = self._canaries()

    def _canaries(self):
        # A hard link that goes changes the change time of the file that stays.
        return {place: {path: entry._replace(changed=0) if path == "shared" else entry
                        for path, entry in snapshot(place).items()}
                for place in (self.outside, self.untagged)}

    # Running.

    def run(self, **how):
        return self.drive(("run", 1, FAR_FUTURE), **how)

    def undo(self, **how):
        return self.drive(("undoAll", 1, FAR_FUTURE), **how)

    @contextlib.contextmanager
    def prepared(self):
        """Makes the world anew; where the operation is to put back, after a run. By a copy an item of the Bin comes
        back to the same folder on another mount."""
        self.reset()
        if self.puts_back:
            self.run()
        above = os.path.dirname(self.folder)
        with mounts.mounted(above, "--bind", above) if self.operation == COPY else contextlib.nullcontext():
            yield

    def calls(self):
        """Those of the operation where nobody disturbs it."""
        with self.prepared():
            return self.perform(act=lambda _: None, count=0).calls

    def start_again(self):
        """What the next start of the program does first."""
        return self.drive(("status", 1, FAR_FUTURE), ("status", 2, FAR_FUTURE))

    def run_whole(self):
        """A run that nobody disturbs takes all that is due; answers what is wrong with it."""
        result = self.run()
        left = sorted(set(self.due) & set(os.listdir(self.folder)))
        return result.problems + result.failures("failed", "error") + [f"still there: {left}"] * bool(left)

    # Checking.

    def problems_after(self, result, in_hand=1):
        """What is wrong after an operation that was disturbed, once the program has started again, and once it has
        run to the end."""
        again = self.start_again()
        problems = result.problems + again.problems + [f"next start: {line}" for line in again.of("error")]
        problems += self.check(in_hand, may_wait=True)
        if not self.puts_back:
            problems += [f"next run: {problem}" for problem in self.run_whole() + self.check()]
        return result.disturbed * bool(problems) + problems

    def journal(self):
        connection = sqlite3.connect(self.database)
        connection.text_factory = lambda text: text.decode(errors="surrogateescape")
        connection.row_factory = sqlite3.Row
        with contextlib.closing(connection):
            return connection.execute('SELECT * FROM "journalEntry" ORDER BY "id"').fetchall()

    def records(self):
        """The Trash's records as pairs of the name in the Trash and the place that they tell of."""
        info = os.path.join(self.trash, "info")
        for name in sorted(os.listdir(info)) if os.path.isdir(info) else []:
            with open(os.path.join(info, name), errors="surrogateescape") as file:
                fields = dict(line.split("=", 1) for line in file.read().splitlines() if "=" in line)
            path = urllib.parse.unquote(fields.get("Path", ""), errors="surrogateescape")
            # Beside a drive's own Trash it is relative to the drive's top.
            yield name.removesuffix(".trashinfo"), os.path.join(os.path.dirname(self.trash), path)

    def changed_canaries(self):
        now = self._canaries()
        return [problem for place, before in self.canaries.items() for problem in differences(place, before, now[place])]

    def check(self, in_hand=1, touched=(), is_undoing=None, also_at=(), may_wait=False):
        """Answers a list of sentences, empty where all is well. As many items as `in_hand` says may lack their
        row; `touched` are items that others changed, looked at by whoever changed them; `also_at` are places
        where the folder has been meanwhile. A record may wait for its item, if that lies at its old place."""
        now, files = snapshot(self.folder), os.path.join(self.trash, "files")
        binned = snapshot(files) if os.path.isdir(files) else {}
        found = self.changed_canaries()
        found += differences("folder", *({path: entry for path, entry in entries.items()
                                          if path.split("/")[0] in self.kept.keys() - touched}
                                         for entries in (self.before, now)))
        for path in now:
            name = path.split("/")[0]
            if name.startswith(REMAINS):
                found.append(f"left in the folder: {path}")
            elif name not in {".", *self.due, *self.kept, *touched}:
                found.append(f"new in the folder: {path}")

        recorded = collections.defaultdict(list)
        for name, path in self.records():
            place, original = os.path.split(path)
            if place not in (self.folder, *also_at):
                found.append(f"a record of another place: {name} of {path}")
            elif name in binned:
                recorded[original].append(name)
            elif not may_wait or original not in now:
                found.append(f"a record without its file: {name} of {path}")
        named = {".", *touched}.union(*recorded.values())
        found += [f"in the Bin without a record: {path}" for path in binned if "/" not in path and path not in named]

        lacking = []
        rows = self.journal()
        for name in self.due.keys() - touched:
            whole, here = parts(self.before, name), parts(now, name)
            places = [place for place in recorded[name] if parts(binned, place) == whole]
            own = [row for row in rows if row["name"] == name]
            lacks = self._lacks_row(whole, here, [os.path.join(files, place) for place in places], own,
                                    self.puts_back if is_undoing is None else is_undoing)
            if lacks is None:
                told = [row["binnedPath"] for row in own if row["undoneAt"] is None]
                found.append(f"{name!r}: here {len(here)} of {len(whole)} entries, in the Bin {places}, rows {told}")
            elif lacks:
                lacking.append(name)
        return found + [f"items without a record: {lacking}"] * (len(lacking) > in_hand)

    def _lacks_row(self, whole, here, places, rows, is_undoing):
        """Whether an item is one that only lacks its row; nothing where something else is wrong with it."""
        live = [row for row in rows if row["undoneAt"] is None]
        if here == whole and not places:
            if not live:
                return False
            if is_undoing and len(live) == 1:
                return True
        elif here == whole and is_undoing and len(places) == len(live) == 1:
            return True  # A copy that is in its place before the original has gone.
        elif not here and len(places) == 1 and len(live) == len(rows):
            if [row["binnedPath"] for row in live] == places:
                return False
            if not live:
                return True
        elif self.disposal == "delete" and not places:
            if not here and [(row["disposal"], row["binnedPath"]) for row in live] == [("delete", None)]:
                return False
            if not live and len(here) < len(whole) and all(whole.get(path) == part for path, part in here.items()):
                return True
        return None


@as_root()
def remove(path):
    """With all that lies in it, if there is anything."""
    if os.path.isdir(path) and not os.path.islink(path):
        for top, directories, _ in os.walk(path):
            for inside in (os.path.join(top, name) for name in directories):
                if not os.path.islink(inside):
                    os.chmod(inside, 0o700)
        shutil.rmtree(path)
    else:
        with contextlib.suppress(FileNotFoundError):
            os.unlink(path)
