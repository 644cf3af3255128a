#!/usr/bin/env python3
"""At every call of a run someone else acts meanwhile: another run, a reading, a put-back, the tag that is taken off,
the folder forgotten, the database held or put out of its place."""

import concurrent.futures
import contextlib
import os
import sqlite3

from machine.canary import FAR_FUTURE, FEW_KEPT, SMALL, File, World, as_user
from machine.report import Report

DUE = SMALL | {"other": File(), "last": {"a": File()}}
# Someone else's patience with the database would else last as long as it does for users.
IN_A_HURRY = {"action": "count"}


def left(world):
    return {name for name in os.listdir(world.folder) if name in DUE}


class Other:
    """Acts once; `settle` brings back what the checks need. What stops the run lets no more go after it than the one
    item that was in hand: what is in hand has left its place, too."""

    in_hand = 1
    also_at = ()
    stops_the_run = False

    def __init__(self, world):
        self.world = world

    def meet(self):
        self.before = left(self.world)
        self.act()

    def act(self):
        pass

    def settle(self):
        pass

    def problems(self):
        gone = self.before - left(self.world)
        return [f"went all the same: {sorted(gone)}"] if self.stops_the_run and len(gone) > 1 else []


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
    stops_the_run = True

    def act(self):
        with as_user():
            self.tag = os.getxattr(self.world.folder, "user.xdg.tags")
            os.removexattr(self.world.folder, "user.xdg.tags")

    def settle(self):
        with as_user():
            os.setxattr(self.world.folder, "user.xdg.tags", self.tag)


class Forgets(Other):
    """The journal goes with the folder, so its items are without a row ever after."""

    stops_the_run = True
    in_hand = len(DUE)

    def act(self):
        self.world.drive(("forget", 1), **IN_A_HURRY)


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

    stops_the_run = True

    def act(self):
        files = os.path.join(self.world.trash, "files")
        self.place = os.path.join(files, "Temporary")
        with as_user():
            for name in ("files", "info"):
                os.makedirs(os.path.join(self.world.trash, name), mode=0o700, exist_ok=True)
            os.rename(self.world.folder, self.place)


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
        self.connection = sqlite3.connect(self.world.database, isolation_level=None, timeout=0)
        with contextlib.suppress(sqlite3.OperationalError):
            self.connection.execute("BEGIN EXCLUSIVE")

    def settle(self):
        self.connection.close()


class PutsTheDatabaseAside(Other):
    """And brings it back later. Until then nothing may go but for what is in hand."""

    stops_the_run = True

    def act(self):
        self.aside = self.world.database + ".aside"
        os.rename(self.world.database, self.aside)

    def settle(self):
        os.rename(self.aside, self.world.database)


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

    def act(_):
        other.meet()
        return "go"

    result = world.run(act=act, at=number)
    problems = result.problems
    if result.calls:
        other.settle()
        problems += other.problems()
    again = world.start_again()
    problems += again.problems + world.check(in_hand=other.in_hand, may_wait=True, also_at=other.also_at)
    return result.disturbed * bool(problems) + problems


def three_at_once(world):
    world.reset()
    with concurrent.futures.ThreadPoolExecutor() as pool:
        results = [run.result() for run in [pool.submit(world.run) for _ in range(3)]]
    again = world.start_again()
    problems = [problem for result in (*results, again) for problem in result.problems]
    return problems + world.check(in_hand=0, may_wait=True)


def main():
    report = Report(__doc__)
    for disposal in ("bin", "delete"):
        with World(report.tools, disposal, DUE, FEW_KEPT) as world:
            count = len(world.calls(disposal))
            for kind in OTHERS:
                for number in report.some(range(1, count + 1), 3):
                    report.check(f"{disposal}, {kind.__name__} at {number}", met, world, kind, number)
            for number in range(report.count(200, 3)):
                report.check(f"{disposal}, three at once, {number}", three_at_once, world)
    report.end()


if __name__ == "__main__":
    main()
