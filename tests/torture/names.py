"""Names of every kind go to the Bin and come back byte for byte; journal rows and Trash records that someone forged
move nothing that isn't theirs."""

import contextlib
import os
import random
import sqlite3

from machine.canary import FAR_FUTURE, FEW_KEPT, File, Link, Pipe, World, contents, differences, snapshot

BATCH = 500
AT_ONCE = 50
LONGEST = 255
ODD = [b"-", b"--", b"-rf", b"\n", b"\r\n", b" ", b"a ", b"\t", b"%", b"%41", b"%00", b"a%", b"~", b"*", b"?", b"\\", b"'",
       b'"', b"$(reboot)", b"`x`", b"&", b";", b"#", b"Path=x", b"[Trash Info]", b"x.trashinfo", b"x.2", b"x", b"!",
       b"\xff", b"\xc3", b"\xe9" * LONGEST, b"x" * LONGEST, b"x" * 246, b"x" * 245 + b"1", b"x" * 245 + b"2",
       "é".encode(), "e\u0301".encode(), "\u202etxt".encode(), "𝄞".encode() * 63, b"a." + b"y" * 250, b"y" * 250 + b".tar"]
DUE = {"file": File(), "tree": {"a": File()}}


def names(seed):
    """A batch without hidden ones."""
    generator = random.Random(seed)
    found = {name for name in ODD if seed == 1}
    while len(found) < BATCH:
        size = generator.choice((1, 2, 3, 8, 60, 244, 245, 246, LONGEST))
        alphabet = generator.choice((bytes(range(1, 256)), b"ab", b"%\n\"' -\\", b"\xc3\xa9\xcc\x81e"))
        name = bytes(generator.choice(alphabet.replace(b"/", b"")) for _ in range(size))
        if not name.startswith(b"."):
            found.add(name)
    return [os.fsdecode(name) for name in sorted(found)]


def there_and_back(world, seed):
    generator = random.Random(seed)
    world.due = {name: generator.choice((File(), File(), File(), {name: File()}, Link(name))) for name in names(seed)}
    world.reset()
    before = contents(world.folder)
    result = world.run()
    problems = result.problems + result.failures("failed") + world.check(in_hand=0)
    if {line[0] for line in result.of("removed")} != set(world.due):
        problems.append("not all went, or under other names")
    if world.disposal == "bin":
        back = world.undo()
        problems += back.failures("notUndone") + world.check(in_hand=0, is_undoing=True)
        problems += differences("put back", before, contents(world.folder))
        problems += [f"left in the Trash: {path}" for path in snapshot(world.trash)
                     if path not in (".", "files", "info")]
    return problems


def forged_rows(world):
    """Names and places of which no pair is that of a row: what is moved by any of them is not the entry's item."""
    files = os.path.join(world.trash, "files")
    binned = os.path.join(files, "file")
    names = ["file", "other", "", ".", "..", "../escaped", "/escaped", "a/b", "file\0", "x" * 300, ".hidden item", "fresh"]
    places = [os.path.join(world.outside, "precious"), os.path.join(world.outside, "album"), world.outside, world.home,
              world.database, world.folder, world.path("fresh"), "/", "", ".", "precious", files, world.trash,
              os.path.join(files, "planted", "precious"), os.path.join(files, "planted"), os.path.join(files, "tree", "a"),
              os.path.join(files, "..", "..", "..", "..", "..", "outside", "precious"),
              os.path.join(world.trash, "info", "file.trashinfo"), os.path.join(files, "other"), binned, binned + "\0",
              os.path.join(files, "tree"), files + "//tree/../file", binned + "/", "~/precious"]
    return [(name, place, folder) for name in names for place in places for folder in (1, 2, 99)
            if not (folder == 1 and name == "file" and os.path.normpath(place) == binned)]


def forge(world, rows):
    with contextlib.closing(sqlite3.connect(world.database)) as connection, connection:
        connection.execute("PRAGMA foreign_keys = OFF")
        connection.executemany(
            """INSERT INTO "journalEntry" ("folderID", "disposal", "name", "binnedPath", "size", "reasons", "performedAt")
            SELECT ?, 'bin', ?, ?, "size", "reasons", "performedAt" FROM "journalEntry" WHERE "id" = 1""",
            [(folder, name, place) for name, place, folder in rows])


def undo_forged(world, rows):
    world.run()
    os.symlink(world.outside, os.path.join(world.trash, "files", "planted"))
    world.write(os.path.join(world.trash, "files", "other"))
    known = len(world.journal())
    forge(world, rows)
    before = {top: contents(top) for top in (world.folder, world.trash, world.outside, world.untagged)}
    result = world.drive(*(("undo", known + 1 + index, FAR_FUTURE) for index in range(len(rows))))
    problems = result.problems
    for top, entries in before.items():
        problems += differences(top, entries, contents(top))
    return problems + [f"undone: {rows[int(line[0]) - known - 1]}" for line in result.of("undone")]


RECORDS = {
    "none": None, "empty": "", "without a path": "[Trash Info]\nDeletionDate=2020-01-01T00:00:00\n",
    "of another item": "[Trash Info]\nPath={outside}/precious\nDeletionDate=2020-01-01T00:00:00\n",
    "that leads up": "[Trash Info]\nPath=../../../../etc/passwd\nDeletionDate=2020-01-01T00:00:00\n",
    "badly encoded": "[Trash Info]\nPath=%zz%4\nDeletionDate=never\n", "of a NUL": "[Trash Info]\nPath=/%00\n",
    "without end": "x" * 5_000_000, "of many paths": "[Trash Info]\n" + "Path=/a\n" * 100_000,
    "link": Link("../../../../../outside/precious"), "pipe": Pipe(), "directory": {}, "unreadable": File(0o000)}


def undo_with_record(world, kind):
    """The item comes back as it was, or stays in the Bin as it was."""
    world.reset()
    before = contents(world.path("file"))
    world.run()
    info = os.path.join(world.trash, "info", "file.trashinfo")
    record = RECORDS[kind]
    os.unlink(info)
    if isinstance(record, str):
        with open(info, "w") as file:
            file.write(record.replace("{outside}", world.outside))
    elif record is not None:
        world.put(os.path.dirname(info), {os.path.basename(info): record})
    result = world.drive(("undo", 1, FAR_FUTURE))
    places = [path for path in (world.path("file"), os.path.join(world.trash, "files", "file")) if os.path.lexists(path)]
    problems = result.problems + world.changed_canaries()
    if len(places) != 1 or contents(places[0]) != before:
        problems.append(f"the item lies at {places}")
    return problems


def run(report):
    with World(report.tools, "bin", {}, {}) as world, World(report.tools, "delete", {}, {}) as deleting:
        for name, chosen, most in (("there and back", world, 20), ("deleted", deleting, 3)):
            for seed in range(1, report.count(most, 1) + 1):
                report.check(f"{name} at {seed}", there_and_back, chosen, seed, number=BATCH)
        numbers = report.some(range(len(forged_rows(world))), 100)
    for start in range(0, len(numbers), AT_ONCE):
        if report.wants(f"forged rows at {start}"):
            # What such a row moves away may be anything, the folder itself included.
            with World(report.tools, "bin", DUE, FEW_KEPT) as world:
                every = forged_rows(world)
                rows = [every[number] for number in numbers[start:start + AT_ONCE]]
                report.case(f"forged rows at {start}", undo_forged(world, rows), len(rows))
    with World(report.tools, "bin", DUE, FEW_KEPT) as world:
        for kind in RECORDS:
            report.check(f"record {kind}", undo_with_record, world, kind)
