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
from machine.driver import FAR_FUTURE, ORDINARY_USER, Driver

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


def entry_of(path, values=None):
    values = values or os.lstat(path)
    kind = stat.S_IFMT(values.st_mode)
    content = ""
    if kind == stat.S_IFREG:
        with open(path, "rb") as file:
            data = file.read()
        content = data.decode() if len(data) < 1000 else hashlib.sha256(data).hexdigest()
    elif kind == stat.S_IFLNK:
        content = os.readlink(path)
    attributes = ()
    # Some file systems keep none.
    with contextlib.suppress(OSError):
        if kind != stat.S_IFLNK:
            attributes = tuple((key, os.getxattr(path, key)) for key in sorted(os.listxattr(path)))
    return Entry(kind, stat.S_IMODE(values.st_mode), content, values.st_mtime_ns, values.st_ctime_ns, attributes)


def snapshot(top):
    """All that lies under a directory, by its path relative to it; the directory itself under "."."""
    found = {}
    pending = ["."]
    while pending:
        relative = pending.pop()
        path = os.path.join(top, relative)
        found[relative] = entry_of(path)
        with os.scandir(path) as entries:
            for entry in entries:
                below = entry.name if relative == "." else os.path.join(relative, entry.name)
                if entry.is_dir(follow_symlinks=False):
                    pending.append(below)
                else:
                    found[below] = entry_of(entry.path, entry.stat(follow_symlinks=False))
    return found


def parts(entries, name):
    """Of a snapshot one top-level entry, as what makes it the same wherever it lies."""
    return {path[len(name):]: (entry.kind, entry.mode, entry.content, entry.attributes,
                               entry.modified if entry.kind == stat.S_IFREG else None)
            for path, entry in entries.items() if path == name or path.startswith(name + "/")}


def contents(path):
    """Of a tree what makes it the same wherever it lies; nothing where there is none."""
    if not os.path.lexists(path):
        return {}
    if not os.path.isdir(path) or os.path.islink(path):
        name = os.path.basename(path)
        return parts({name: entry_of(path)}, name)
    return contents_of(snapshot(path))


def contents_of(entries):
    return {path: parts({path: entry}, path)[""] for path, entry in entries.items()}


def differences(what, before, now):
    return [f"{what} {path} was {before.get(path)} and is {now.get(path)}"
            for path in sorted(before.keys() | now.keys()) if before.get(path) != now.get(path)]


def disposal_of(operation):
    return "delete" if operation == "delete" else "bin"


def puts_back(operation):
    return operation not in ("bin", "delete")


@contextlib.contextmanager
def as_user():
    """With the rights of the user whose home it is, as far as this process can give up its own."""
    if os.getuid() != 0:
        yield
        return
    os.setegid(ORDINARY_USER)
    os.seteuid(ORDINARY_USER)
    try:
        yield
    finally:
        os.seteuid(0)
        os.setegid(0)


def own(path):
    """Makes it that user's."""
    if os.getuid() == 0:
        os.chown(path, ORDINARY_USER, ORDINARY_USER)


class World:
    """Lies in a directory, by default a temporary one; the folder may lie on a drive of its own."""

    def __init__(self, tools, disposal, due=None, kept=None, directory=None, drive=None):
        self.root = os.path.realpath(tempfile.mkdtemp(prefix="tidemar-torture-", dir=directory))
        own(self.root)
        self.disposal = disposal
        self.due = DUE if due is None else due
        self.kept = KEPT if kept is None else kept
        if os.getuid() != 0:
            self.kept = {name: part for name, part in self.kept.items() if name != "unreadable"}
        self.home = os.path.join(self.root, "home")
        self.folder = os.path.join(drive or self.home, "Papers", "Temporary")
        self.untagged = os.path.join(self.home, "Papers", "Untagged")
        self.outside = os.path.join(self.root, "outside")
        self.data = os.path.join(self.home, ".local", "share")
        self.trash = os.path.join(drive, f".Trash-{ORDINARY_USER if os.getuid() == 0 else os.getuid()}") if drive \
            else os.path.join(self.data, "Trash")
        self.database = os.path.join(self.data, "Tidemar", "tidemar.sqlite")
        self.drive = Driver(*tools, self.home, self.database)
        self._count = 0
        self._tags = b""
        self._make()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.root, ignore_errors=True)

    def path(self, *names):
        return os.path.join(self.folder, *names)

    # Building.

    def _make(self):
        with as_user():
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

    def put(self, directory, entries):
        """Every file gets content of its own, by which it is known wherever it comes to lie."""
        for name, part in entries.items():
            path = os.path.join(directory, name)
            if isinstance(part, dict):
                part = Directory(part)
            if isinstance(part, Directory):
                os.mkdir(path)
                self.put(path, part.entries)
                os.chmod(path, part.mode)
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
        if os.path.basename(path) == ".hidden" and os.path.dirname(path) == self.folder:
            content = "listed\n"
        with open(path, "w") as file:
            file.write(content)
            if part.sparse:
                file.truncate(1 << 20)
        os.chmod(path, part.mode)
        if part.fresh:
            os.utime(path, (FRESH, FRESH))
        return content

    def reset(self):
        """The world as it was made, but for what lies in the folder: that is made anew."""
        for directory in (self.folder, self.trash):
            with contextlib.suppress(FileNotFoundError):
                for name in os.listdir(directory):
                    remove(os.path.join(directory, name))
        for ending in ("-journal", "-wal", "-shm"):
            with contextlib.suppress(FileNotFoundError):
                os.unlink(self.database + ending)
        with as_user():
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

    def run(self, **settings):
        return self.drive(("run", 1, FAR_FUTURE), **settings)

    def undo(self, **settings):
        return self.drive(("undoAll", 1, FAR_FUTURE), **settings)

    @contextlib.contextmanager
    def prepared(self, operation):
        """Makes the world anew, and gives what performs the operation: a run, or putting back what a run took."""
        self.reset()
        if not puts_back(operation):
            yield self.run
            return
        self.run()
        with self.on_another_mount() if operation == COPY else contextlib.nullcontext():
            yield self.undo

    @contextlib.contextmanager
    def on_another_mount(self):
        """The same folder, but so that an item of the Bin comes back as a copy."""
        above = os.path.dirname(self.folder)
        with mounts.mounted(above, "--bind", above):
            yield

    def calls(self, operation):
        """Those of the operation where nobody disturbs it."""
        with self.prepared(operation) as perform:
            return perform(action="trace").calls

    def start_again(self):
        """What the next start of the program does first."""
        return self.drive(("status", 1, FAR_FUTURE), ("status", 2, FAR_FUTURE))

    def run_whole(self):
        """A run that nobody disturbs takes all that is due; answers what is wrong with it."""
        result = self.run()
        problems = result.problems + [str(line) for line in result.of("failed") + result.of("error")]
        left = sorted(set(self.due) & set(os.listdir(self.folder)))
        return problems + ([f"still there: {left}"] if left else [])

    # Checking.

    def problems_after(self, result, operation, in_hand=1):
        """What is wrong after an operation that was disturbed, once the program has started again, and once it has
        run to the end."""
        again = self.start_again()
        problems = result.problems + again.problems + [f"next start: {line}" for line in again.of("error")]
        problems += self.check(in_hand, is_undoing=puts_back(operation), may_wait=True)
        if not puts_back(operation):
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

    def check(self, in_hand=1, touched=(), is_undoing=False, also_at=(), may_wait=False):
        """Answers a list of sentences, empty where all is well. As many items as `in_hand` says may lack their
        row; `touched` are items that others changed, looked at by whoever changed them; `also_at` are places
        where the folder has been meanwhile. A record may wait for its item, if that lies at its old place."""
        return Check(self, set(touched), is_undoing, {self.folder, *also_at}, may_wait).problems(in_hand)

    def changed_canaries(self):
        now = self._canaries()
        return [problem for place, before in self.canaries.items() for problem in differences(place, before, now[place])]

    def lost(self, *snapshots):
        """Of snapshots of before what doesn't lie anywhere any more, or twice."""
        there = collections.Counter(entry.content for entry in snapshot(self.root).values() if entry.content)
        return [f"{path} lies in {there[entry.content]} places" for before in snapshots
                for path, entry in before.items() if entry.content and there[entry.content] != 1]


class Check:
    def __init__(self, world, touched, is_undoing, places, may_wait):
        self.world = world
        self.touched = touched
        self.is_undoing = is_undoing
        self.places = places
        self.may_wait = may_wait
        self.now = snapshot(world.folder)
        files = os.path.join(world.trash, "files")
        self.binned = snapshot(files) if os.path.isdir(files) else {}
        self.rows = world.journal()
        self.found = world.changed_canaries()

    def problems(self, in_hand):
        self._compare_kept()
        self._look_for_remains()
        self._read_records()
        lacking = [name for name in self.world.due if name not in self.touched and self._lacks_row(name)]
        if len(lacking) > in_hand:
            self.found.append(f"items without a record: {lacking}")
        return self.found

    def _compare_kept(self):
        def kept(entries):
            return {path: entry for path, entry in entries.items()
                    if path.split("/")[0] in self.world.kept and path.split("/")[0] not in self.touched}
        self.found += differences("folder", kept(self.world.before), kept(self.now))

    def _look_for_remains(self):
        for path in self.now:
            name = path.split("/")[0]
            if name.startswith(REMAINS):
                self.found.append(f"left in the folder: {path}")
            elif name not in self.world.due and name not in self.world.kept and name != "." \
                    and name not in self.touched:
                self.found.append(f"new in the folder: {path}")

    def _read_records(self):
        self.recorded = collections.defaultdict(list)
        for name, path in self.world.records():
            if name not in self.binned:
                if not (self.may_wait and os.path.dirname(path) in self.places and os.path.basename(path) in self.now):
                    self.found.append(f"a record without its file: {name} of {path}")
            elif os.path.dirname(path) in self.places:
                self.recorded[os.path.basename(path)].append(name)
            else:
                self.found.append(f"a record of another place: {name} of {path}")
        named = {name for names in self.recorded.values() for name in names}
        for path in self.binned:
            if path != "." and "/" not in path and path not in named | self.touched:
                self.found.append(f"in the Bin without a record: {path}")

    def _lacks_row(self, name):
        """Says what is wrong with an item, or answers whether it is one that only lacks its row."""
        whole = parts(self.world.before, name)
        here = parts(self.now, name)
        places = [place for place in self.recorded[name] if parts(self.binned, place) == whole]
        live = [row for row in self.rows if row["name"] == name and row["undoneAt"] is None]
        deleted = [row for row in live if row["disposal"] == "delete" and row["binnedPath"] is None]
        rows = [row["binnedPath"] for row in live]
        state = f"{name!r}: here {len(here)} of {len(whole)} entries, in the Bin {places}, rows {rows}"

        if here == whole and not places:
            if not live:
                return False
            if self.is_undoing and len(live) == 1:
                return True
        elif here == whole and self.is_undoing and len(places) == len(live) == 1:
            return True  # A copy that is in its place before the original has gone.
        elif not here and len(places) == 1 and not self._was_put_back(name):
            place = os.path.join(self.world.trash, "files", places[0])
            if rows == [place]:
                return False
            if not live:
                return True
        elif self.world.disposal == "delete" and not places:
            if not here and len(live) == len(deleted) == 1:
                return False
            if not live and len(here) < len(whole) and all(whole.get(path) == part for path, part in here.items()):
                return True
        self.found.append(state)
        return False

    def _was_put_back(self, name):
        return any(row["name"] == name and row["undoneAt"] is not None for row in self.rows)


def remove(path):
    if os.path.isdir(path) and not os.path.islink(path):
        for top, directories, _ in os.walk(path):
            for name in directories:
                inside = os.path.join(top, name)
                if not os.path.islink(inside):
                    os.chmod(inside, 0o700)
        shutil.rmtree(path)
    else:
        os.unlink(path)
