#!/usr/bin/env python3
"""At every call of a run someone else acts meanwhile: another run, a reading, a put-back, the tag that is taken off,
the folder forgotten, the database held or put out of its place."""

import concurrent.futures
import contextlib
import os
import sqlite3

from machine.canary import FAR_FUTURE, File, World, as_user
from machine.report import Report

DUE = {"file": File(), "tree": {"a": File(), "inner": {"b": File(), "c": File()}}, "other": File(),
       "last": {"a": File()}}
KEPT = {".hidden item": File(), "fresh": File(fresh=True)}
# Someone else's patience with the database would else last as long as it does for users.
IN_A_HURRY = {"action": "count"}


def left(world):
    return {name for name in os.listdir(world.folder) if name in DUE}


def gone_since(world, before):
    """No more may go than the item that was in hand. What is in hand has left its place, too."""
    gone = before - left(world)
    return [f"went all the same: {sorted(gone)}"] if len(gone) > 1 else []


class Other:
    """Acts once; `settle` brings back what the checks need, `problems` tells what else is wrong."""

    in_hand = 1
    also_at = ()

    def __init__(self, world):
        self.world = world

    def act(self):
        pass

    def settle(self):
        pass

    def problems(self):
        return []


class Reads(Other):
    """Must not take what the run has in its hand for what a killed one had left."""

    in_hand = 0

    def act(self):
        self.world.drive(("status", 1, FAR_FUTURE), **IN_A_HURRY)


class Runs(Other):
    in_hand = 0

    def act(self):
        self.world.run(**IN_A_HURRY)


class PutsBack(Other):
    in_hand = 0

    def act(self):
        self.world.undo(**IN_A_HURRY)


class TakesTheTagOff(Other):
    def act(self):
        self.before = left(self.world)
        with as_user():
            self.tag = os.getxattr(self.world.folder, "user.xdg.tags")
            os.removexattr(self.world.folder, "user.xdg.tags")

    def settle(self):
        with as_user():
            os.setxattr(self.world.folder, "user.xdg.tags", self.tag)

    def problems(self):
        return gone_since(self.world, self.before)


class Forgets(Other):
    """The journal goes with the folder, so its items are without a row ever after."""

    in_hand = len(DUE)

    def act(self):
        self.before = left(self.world)
        self.world.drive(("forget", 1), **IN_A_HURRY)

    def problems(self):
        return gone_since(self.world, self.before)


class MovesTheFolder(Other):
    """The run may go on with it, wherever it lies."""

    def act(self):
        self.place = os.path.join(self.world.home, "Elsewhere")
        with as_user():
            os.rename(self.world.folder, self.place)
        self.also_at = (self.place,)

    def settle(self):
        with as_user():
            os.rename(self.place, self.world.folder)
            self.world.follow_again()


class BinsTheFolder(MovesTheFolder):
    """As a file manager does. What lies in the Bin isn't cleared."""

    def act(self):
        self.before = left(self.world)
        files = os.path.join(self.world.trash, "files")
        self.place = os.path.join(files, "Temporary")
        with as_user():
            for name in ("files", "info"):
                os.makedirs(os.path.join(self.world.trash, name), mode=0o700, exist_ok=True)
            os.rename(self.world.folder, self.place)

    def problems(self):
        return gone_since(self.world, self.before)


class TakesTheRightsAway(Other):
    """To write in the folder."""

    def act(self):
        with as_user():
            os.chmod(self.world.folder, 0o500)

    def settle(self):
        with as_user():
            os.chmod(self.world.folder, 0o700)


class HoldsTheDatabase(Other):
    """For as long as the run lasts."""

    def act(self):
        self.before = left(self.world)
        self.connection = sqlite3.connect(self.world.database, isolation_level=None, timeout=0)
        with contextlib.suppress(sqlite3.OperationalError):
            self.connection.execute("BEGIN EXCLUSIVE")

    def settle(self):
        self.connection.close()


class PutsTheDatabaseAside(Other):
    """And brings it back later. Until then nothing may go but for what is in hand."""

    def act(self):
        self.before = left(self.world)
        self.aside = self.world.database + ".aside"
        os.rename(self.world.database, self.aside)

    def settle(self):
        os.rename(self.aside, self.world.database)

    def problems(self):
        return gone_since(self.world, self.before)


class PutsAnotherInItsPlace(PutsTheDatabaseAside):
    def act(self):
        super().act()
        with as_user(), open(self.world.database, "w"):
            pass


OTHERS = (Reads, Runs, PutsBack, TakesTheTagOff, Forgets, MovesTheFolder, BinsTheFolder,
          TakesTheRightsAway, HoldsTheDatabase, PutsTheDatabaseAside, PutsAnotherInItsPlace)


def met(world, kind, number):
    world.reset()
    other = kind(world)
    calls = []

    def act(call):
        calls.append(f"{kind.__name__} at {call.function} {call.path}")
        other.act()
        return "go"

    result = world.run(act=act, at=number)
    problems = result.problems
    if calls:
        other.settle()
        problems += other.problems()
    again = world.start_again()
    problems += again.problems + world.check(in_hand=other.in_hand, may_wait=True, also_at=other.also_at)
    return calls * bool(problems) + problems


def both_at_once(world):
    world.reset()
    with concurrent.futures.ThreadPoolExecutor() as pool:
        results = [run.result() for run in [pool.submit(world.run) for _ in range(3)]]
    again = world.start_again()
    problems = [problem for result in (*results, again) for problem in result.problems]
    return problems + world.check(in_hand=0, may_wait=True)


def main():
    report = Report(__doc__)
    for disposal in ("bin", "delete"):
        with World(report.tools, disposal, DUE, KEPT) as world:
            count = len(world.run(action="trace").calls)
            for kind in OTHERS:
                for number in report.some(range(1, count + 1), 3):
                    label = f"{disposal}, {kind.__name__} at {number}"
                    if report.wants(label):
                        report.case(label, met(world, kind, number))
            for number in range(report.count(200, 3)):
                if report.wants(f"{disposal}, three at once, {number}"):
                    report.case(f"{disposal}, three at once, {number}", both_at_once(world))
    report.end()


if __name__ == "__main__":
    main()
