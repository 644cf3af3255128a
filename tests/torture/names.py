#!/usr/bin/env python3
"""Names of every kind go to the Bin and come back byte for byte, or are deleted."""

import os
import random

from machine.canary import File, Link, World, contents, differences, snapshot
from machine.report import Report

BATCH = 500
LONGEST = 255
ODD = [b"-", b"--", b"-rf", b"\n", b"\r\n", b" ", b"a ", b"\t", b"%", b"%41", b"%00", b"a%", b"~", b"*", b"?", b"\\", b"'",
       b'"', b"$(reboot)", b"`x`", b"&", b";", b"#", b"Path=x", b"[Trash Info]", b"x.trashinfo", b"x.2", b"x", b"!",
       b"\xff", b"\xc3", b"\xe9" * LONGEST, b"x" * LONGEST, b"x" * 246, b"x" * 245 + b"1", b"x" * 245 + b"2",
       "é".encode(), "e\u0301".encode(), "\u202etxt".encode(), "𝄞".encode() * 63, b"a." + b"y" * 250, b"y" * 250 + b".tar"]


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
    problems = result.problems + [str(line) for line in result.of("failed")] + world.check(in_hand=0)
    if {line[0] for line in result.of("removed")} != set(world.due):
        problems.append("not all went, or under other names")
    if world.disposal == "bin":
        back = world.undo()
        problems += [str(line) for line in back.of("notUndone")] + world.check(in_hand=0, is_undoing=True)
        problems += differences("put back", before, contents(world.folder))
        problems += [f"left in the Trash: {path}" for path in snapshot(world.trash)
                     if path not in (".", "files", "info")]
    return problems


def main():
    report = Report(__doc__)
    for disposal, most in (("bin", 20), ("delete", 3)):
        with World(report.tools, disposal, {}, {}) as world:
            for seed in range(1, report.count(most, 1) + 1):
                label = f"there and back by way of {disposal} at {seed}"
                if report.wants(label):
                    report.case(label, there_and_back(world, seed), BATCH)
    report.end()


if __name__ == "__main__":
    main()
