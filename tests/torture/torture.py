#!/usr/bin/env python3
"""Runs one of the checks and reports."""

import argparse
import importlib
import random
import signal
import sys
import time

from machine.driver import become_ordinary

SKIPPED = 77


class Report:
    """Counts cases and prints what went wrong in them. Every case has a label; `--only` repeats it alone."""

    def __init__(self, options):
        self.tools = (options.driver, options.hook)
        self.is_full = options.full
        self._options = options
        self.random = random.Random(options.seed)
        self.counts = {}
        self.failed = 0
        self.has_skipped = False
        self._start = time.monotonic()
        signal.signal(signal.SIGTERM, lambda *_: self.end("cut off: "))

    def count(self, full, reduced):
        return full if self.is_full else min(full, reduced * self._options.times)

    def some(self, windows, most, full=None):
        """In a reduced run that many of the windows, the same ones each time; in a full one all, or so many."""
        windows = list(windows)
        most = (full or len(windows)) if self.is_full else most * self._options.times
        if self._options.only or len(windows) <= most:
            return windows
        return [windows[index] for index in sorted(self.random.sample(range(len(windows)), most))]

    def windows(self, calls, world, most):
        """The numbers of the calls to act at: of all; in a reduced run of some of those about the folder or the Bin,
        since most others are the database's."""
        if not self.is_full:
            calls = [call for call in calls if call.path.startswith((world.folder, world.trash))]
        return self.some([call.number for call in calls], most)

    def wants(self, label):
        """Nothing for a label stands for what only all cases together can tell."""
        return self._options.only in (None, label)

    def check(self, label, function, *arguments, number=1):
        """Counts a case that is wanted; the function answers its problems."""
        if self.wants(label):
            self.case(label, function(*arguments), number)

    def case(self, label, problems, number=1):
        group = label.split(",")[0].split(" at ")[0]
        self.counts[group] = self.counts.get(group, 0) + number
        if not problems:
            return
        self.failed += 1
        print(f"--only '{label}'", *problems, sep="\n    ", flush=True)
        if self.failed >= self._options.most:
            self.end()

    def skip(self, reason):
        self.has_skipped = True
        print("SKIPPED:", reason, flush=True)

    def end(self, how=""):
        for group, number in self.counts.items():
            print(f"{number:8,} {group}")
        total = sum(self.counts.values())
        print(f"{how}{total:8,} cases in {time.monotonic() - self._start:.0f} s, {self.failed} with problems")
        sys.exit(1 if self.failed else SKIPPED if self.has_skipped and not total else 0)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    for name in ("check", "driver", "hook"):
        parser.add_argument(name)
    parser.add_argument("--full", action="store_true", help="every window and the full counts")
    parser.add_argument("--times", type=int, default=1, help="so many times the sample")
    parser.add_argument("--only", help="the one case of this label")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--most", type=int, default=20, help="end after this many cases with problems")
    options = parser.parse_args()
    check = importlib.import_module(options.check)
    become_ordinary()
    report = Report(options)
    check.run(report)
    report.end()


if __name__ == "__main__":
    main()
