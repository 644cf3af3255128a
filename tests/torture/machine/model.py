"""The rules by which items go, told a second time, to compare the program with: straight from a folder's entries to
what goes, in whole nanoseconds and without a thought for speed."""

import collections
import math
import os
import stat
import unicodedata
from fractions import Fraction

DAY = 86400
PACKAGES = (".appdir", ".photoslibrary", ".rtfd")

Rules = collections.namedtuple("Rules", "days limit automatic restart disposal last_run")
Conditions = collections.namedtuple("Conditions", "now available total boot")
Entry = collections.namedtuple("Entry", "name is_hidden is_package dates size is_whole")
Item = collections.namedtuple("Item", "name freshness size")


def hidden_names(directory):
    path = os.path.join(directory, ".hidden")
    if not os.path.isfile(path) or os.path.islink(path):
        return set()
    with open(path, "rb") as file:
        return {os.fsdecode(line) for line in file.read().split(b"\n") if line}


def is_package(name, values):
    return stat.S_ISDIR(values.st_mode) and name.lower().endswith(PACKAGES)


def date(name, values):
    """A directory's own date is when it came; of all else the later of that and when it was changed."""
    if stat.S_ISDIR(values.st_mode) and not is_package(name, values):
        return values.st_ctime_ns
    return max(values.st_ctime_ns, values.st_mtime_ns)


def may(values, right):
    """The owner's right, whoever asks here."""
    return bool(values.st_mode & right)


def entries(directory):
    """Each with the dates that count, its own and those of all in it, its size with that, and whether all of it could
    be read."""
    listed = hidden_names(directory)
    for name in os.listdir(directory):
        path = os.path.join(directory, name)
        values = os.lstat(path)
        dates, size, is_whole = tally(path) if stat.S_ISDIR(values.st_mode) else ([], 0, True)
        if is_package(name, values):
            dates = []
        is_hidden = name.startswith(".") or name in listed
        yield Entry(name, is_hidden, is_package(name, values), [date(name, values), *dates],
                    size + values.st_blocks * 512, is_whole)


def tally(directory):
    """Of all that lies in a directory: the dates that count, the sizes, and whether all of it could be read."""
    own = os.lstat(directory)
    if not may(own, stat.S_IRUSR):
        return [], 0, False
    if not may(own, stat.S_IXUSR):
        return [], 0, not os.listdir(directory)
    found = list(entries(directory))
    dates = [when for entry in found if not entry.is_hidden for when in entry.dates]
    return dates, sum(entry.size for entry in found), all(entry.is_whole for entry in found)


def items(folder):
    for entry in entries(folder):
        if not entry.is_hidden:
            is_dated = entry.is_whole or entry.is_package
            yield Item(entry.name, Fraction(max(entry.dates), 10**9) if is_dated else None, entry.size)


def order(item):
    # Of bytes that are no text only the place among the others is left open.
    return item.freshness, unicodedata.normalize("NFC", os.fsencode(item.name).decode(errors="replace"))


def enough(wanted, dated):
    """How many of the oldest make up that many bytes."""
    taken = 0
    while wanted > 0 and taken < len(dated):
        wanted -= dated[taken].size
        taken += 1
    return taken


def due(found, rules, conditions):
    """Pairs of a name and the set of its reasons, oldest first."""
    dated = sorted((item for item in found if item.freshness is not None), key=order)
    counts = {}
    if rules.days is not None:
        counts["age"] = sum(item.freshness < conditions.now - rules.days * DAY for item in dated)
    if rules.limit is not None:
        counts["size"] = enough(sum(item.size for item in found) - rules.limit, dated)
    if rules.automatic and rules.disposal == "delete":
        counts["automatic"] = enough(math.ceil(conditions.total * 0.1) - conditions.available, dated)
    if rules.restart and rules.last_run < conditions.boot:
        counts["emptyOnRestart"] = sum(item.freshness < conditions.boot for item in dated)
    return [(item.name, {rule for rule, count in counts.items() if count > place})
            for place, item in enumerate(dated[:max(counts.values(), default=0)])]


def upcoming(found, rules):
    if rules.days is None:
        return []
    dated = sorted((item for item in found if item.freshness is not None), key=order)
    return [(item.name, item.freshness + rules.days * DAY) for item in dated]
