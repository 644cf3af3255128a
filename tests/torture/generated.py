"""Folders, rules and clocks made at random: the driver's status must say what a second telling of the rules says."""

import collections
import contextlib
import json
import os
import random
import tempfile
import time
from fractions import Fraction

from machine import mounts
from machine.canary import remove
from machine.driver import Driver, as_root
from machine.model import DAY, PACKAGES, Conditions, Rules, due, items, upcoming

AHEAD = (int(time.time()) // DAY + 10) * DAY
BOOT = AHEAD + 5 * DAY
FOLDERS = 50
CASES = 10
CLOSE = Fraction(1, 10**5)
# No two that are the same text: their order is left open.
NAMES = ["a", "b", "B", "a\u0308", "10", "9", "Z z", "x.AppDir", "y.RTFD", "p.photosLibrary", "AppDir", "x.app", "\udcff",
         ".hidden", ".seen", "a.AppDir.txt", "z.appdir", "ab", "a b", "-", "%", "ß", "ſ", "ﬀ", "\u212b", "e", "é"]


class Generator:
    """Most dates lie ahead of the clock, in whole seconds: the only ones that can be set, and exact ones."""

    def __init__(self, seed):
        self.random = random.Random(seed)

    def date(self, path=""):
        date = AHEAD + self.random.choice((0, 1, DAY, 5 * DAY, self.random.randrange(20 * DAY)))
        # What lies where dates may not count is the youngest.
        may_not_count = any(name.startswith(".") or name.lower().endswith(PACKAGES) for name in path.split("/")[:-1])
        return date + (20 * DAY if may_not_count else 0)

    def fill(self, directory, depth):
        names = self.random.sample(NAMES, self.random.randrange(8 if depth else 12))
        for name in names:
            self.entry(os.path.join(directory, name), depth, names)

    def entry(self, path, depth, names):
        kind = self.random.choice(("file", "file", "file", "directory", "directory", "link", "pipe"))
        if os.path.basename(path) == ".hidden":
            with open(path, "w", errors="surrogateescape") as file:
                file.write("\n".join(self.random.sample([*names, "", "no such", "a\r"], min(3, len(names)))))
        elif kind == "directory" and depth < 4:
            os.mkdir(path)
            if depth == 0:
                # Only one date can be set on a directory, that of what lies in it.
                self.file(os.path.join(path, "dated"))
            self.fill(path, depth + 1)
            os.chmod(path, self.random.choice((0o755,) * 20 + ((0, 0o400, 0o100, 0o500) if depth else (0o700,))))
        elif kind == "link":
            os.symlink("a", path)
            self.set_date(path)
        elif kind == "pipe":
            os.mkfifo(path)
            self.set_date(path)
        else:
            self.file(path)

    def file(self, path):
        with open(path, "wb") as file:
            file.write(b"x" * self.random.choice((0, 1, 4096, 4097, 50_000)))
            if self.random.random() < 0.1:
                file.truncate(1 << 20)
        self.set_date(path)

    def set_date(self, path):
        if self.random.random() < 0.9:
            date = self.date(path) if self.random.random() < 0.9 else 0
            os.utime(path, (date, date), follow_symlinks=False)

    def rules(self, sizes, disposal=None):
        pick = self.random.choice
        some = sum(self.random.sample(sizes, self.random.randrange(len(sizes) + 1)))
        return Rules(pick((None, 0, 1, 2, 7, 30, -1, 3650)), pick((None, None, 0, some, some + 1, some - 1, sum(sizes), 1 << 60)),
                     pick((False, True)), pick((False, True)), disposal or pick(("bin", "delete")),
                     pick((0, BOOT - 1, BOOT, BOOT + 1)))

    def now(self, found, rules):
        """Often the very moment at which an item becomes due, or one close by."""
        dates = [item.freshness for item in found if item.freshness is not None]
        if not dates or self.random.random() < 0.2:
            return float(self.date())
        exact = [date for date in dates if date.denominator == 1]
        moment = self.random.choice(exact or dates) + (rules.days or 0) * DAY
        return float(moment + self.random.choice((0, Fraction(1, 1000), -Fraction(1, 1000), 1, -1)))


def are_told_apart(found, *border):
    """Whether no two dates lie so close that the driver's floating point may see them in another order."""
    dates = sorted([item.freshness for item in found if item.freshness is not None] + [*border])
    return all(later == earlier or later - earlier > CLOSE for earlier, later in zip(dates, dates[1:]))


def compare(result, expected):
    """`result` are the driver's lines for one status."""
    found, removals, forecast = expected
    said = {line[1]: line[2:] for line in result if line[0] == "item"}
    problems = []
    for item in found:
        freshness, size = said.pop(item.name, (None, "-1"))
        close = freshness is None if item.freshness is None else \
            freshness is not None and abs(Fraction(freshness) - item.freshness) < CLOSE
        if not close or int(size) != item.size:
            problems.append(f"{item} is {freshness}, {size}")
    problems += [f"{name} is no item" for name in said]
    told = [(line[1], set(json.loads(line[2]))) for line in result if line[0] == "due"]
    if told != removals:
        problems.append(f"due are {told} and not {removals}")
    told = [(line[1], Fraction(line[2])) for line in result if line[0] == "upcoming"]
    if [name for name, _ in told] != [name for name, _ in forecast] or any(
            abs(date - expected) > CLOSE for (_, date), (_, expected) in zip(told, forecast)):
        problems.append(f"upcoming are {told} and not {forecast}")
    return problems


def fill_drive(drive, generator):
    """Leaves about a tenth of it free."""
    space = os.statvfs(drive)
    left = space.f_blocks * space.f_frsize // 10 - generator.choice((-4096, 0, 1, 4096, 20_000, 200_000))
    with open(os.path.join(drive, "ballast"), "wb") as file:
        os.posix_fallocate(file.fileno(), 0, space.f_bavail * space.f_frsize - left)
    return os.statvfs(drive)


def batch(report, seen, seed, home, drive):
    """Some folders, each with many rules and moments, in one process of the driver."""
    generator = Generator(seed)
    driver = Driver(*report.tools, home, os.path.join(home, "database"))
    top = tempfile.mkdtemp(dir=drive)
    folders = [os.path.join(top, str(number)) for number in range(FOLDERS)]
    is_tagged = {}
    for folder in folders:
        os.mkdir(folder)
        generator.fill(folder, 0)
        is_tagged[folder] = generator.random.random() < 0.9
    added = driver(*(("add", folder, 0) for folder in folders))
    numbers = {folder: number for number, folder in added.of("folder")}
    driver(*(("tag", numbers[folder], 1, 0) for folder in folders if is_tagged[folder]))
    commands, expected = [], []
    space = fill_drive(drive, generator.random) if os.path.ismount(drive) else os.statvfs(drive)
    for folder in folders:
        with as_root():
            found = list(items(folder))
        if not are_told_apart(found):
            continue
        for _ in range(CASES):
            rules = generator.rules([item.size for item in found] or [0])
            now = generator.now(found, rules)
            if not are_told_apart(found, Fraction(now) - (rules.days or 0) * DAY):
                continue
            conditions = Conditions(Fraction(now), space.f_bavail * space.f_frsize, space.f_blocks * space.f_frsize, BOOT)
            commands += [("rules", numbers[folder], rules.days, rules.limit, int(rules.automatic), int(rules.restart),
                          rules.disposal, rules.last_run), ("status", numbers[folder], repr(now))]
            expected.append((found, due(found, rules, conditions), upcoming(found, rules))
                            if is_tagged[folder] else (found, [], []))
    result = driver(*commands)
    answers = [[]]
    for line in result.lines:
        answers[-1].append(line)
        if line[0] == "done":
            answers.append([])
    problems = result.problems + added.failures("error") + result.failures("error")
    for number, (answer, known) in enumerate(zip(answers[1::2], expected)):
        problems += [f"{commands[2 * number]} {commands[2 * number + 1]}: {problem}" for problem in compare(answer, known)]
    if len(answers) // 2 != len(expected):
        problems.append(f"{len(answers) // 2} answers to {len(expected)} questions")
    for path in (top, os.path.join(home, "database"), os.path.join(drive, "ballast")):
        remove(path)
    report.case(f"folders at {seed}", problems[:20], len(expected))
    seen.update(reason for _, removals, _ in expected for _, reasons in removals for reason in reasons)
    return len(expected)


@contextlib.contextmanager
def places(report):
    """A home and a drive for the folders. Where mounts can be made, the drive is nearly full and the computer has
    started later than most items came."""
    with tempfile.TemporaryDirectory(prefix="tidemar-torture-") as top, contextlib.ExitStack() as stack:
        home, drive, run = (os.path.join(top, name) for name in ("home", "drive", "run"))
        for path in (home, drive, run):
            os.mkdir(path)
        if reason := mounts.enter_own_mounts():
            report.skip(f"low disk space and restarts: {reason}")
        else:
            for place in (home, drive):
                stack.enter_context(mounts.mounted(place, "-t", "tmpfs", "-o", "size=100m,mode=1777", "none"))
            with open("/proc/stat") as file, open(os.path.join(top, "stat"), "w") as changed:
                changed.writelines(f"btime {BOOT}\n" if line.startswith("btime ") else line for line in file)
            stack.enter_context(mounts.mounted("/proc/stat", "--bind", os.path.join(top, "stat")))
        yield home, drive


def run(report):
    with places(report) as (home, drive):
        done = seed = 0
        seen = collections.Counter()
        while done < report.count(10_000, 2_000):
            seed += 1
            done += batch(report, seen, seed, home, drive) if report.wants(f"folders at {seed}") else 1
        rules = ("age", "size", "automatic", "emptyOnRestart") if os.path.ismount(drive) else ("age", "size")
        if report.wants(None):
            report.case("rules", [f"no item went by {rule}" for rule in rules if not seen[rule]], len(rules))
