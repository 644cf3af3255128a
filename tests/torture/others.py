"""At every call of a run someone else acts meanwhile: another run, a reading, a put-back, the tag that is taken off,
the folder forgotten, the database held or put out of its place."""

import concurrent.futures
import contextlib
import os
import sqlite3

from machine.canary import FAR_FUTURE, FEW_KEPT, SMALL, TAGS, File, worlds

DUE = SMALL | {"other": File(), "last": {"a": File()}}

# Someone else acts up to the yield, which gives false where that came to nothing, and behind it brings back what the
# checks need.


def Reads(world):
    """Must not take what the run has in its hand for what a killed one had left."""
    world.drive(("status", 1, FAR_FUTURE))
    yield


def Runs(world):
    world.run()
    yield


def PutsBack(world):
    world.undo()
    yield


def TakesTheTagOff(world):
    os.removexattr(world.folder, TAGS)
    yield


def Forgets(world):
    # In the midst of the run's own writing the database takes nothing else.
    yield not world.drive(("forget", 1)).of("error")


def MovesTheFolder(world, place=None):
    """The run may go on with it, wherever it lies."""
    place = place or elsewhere(world)
    os.makedirs(os.path.dirname(place), mode=0o700, exist_ok=True)
    os.rename(world.folder, place)
    yield
    os.rename(place, world.folder)
    world.follow_again()


def elsewhere(world):
    return os.path.join(world.home, "Elsewhere")


def BinsTheFolder(world):
    """As a file manager does. What lies in the Bin isn't cleared."""
    os.makedirs(os.path.join(world.trash, "info"), mode=0o700, exist_ok=True)
    return MovesTheFolder(world, os.path.join(world.trash, "files", "Temporary"))


def TakesTheRightsAway(world):
    """To write in the folder."""
    os.chmod(world.folder, 0o500)
    yield
    os.chmod(world.folder, 0o700)


def HoldsTheDatabase(world):
    """For as long as the run lasts."""
    with contextlib.closing(sqlite3.connect(world.database, isolation_level=None, timeout=0)) as connection:
        with contextlib.suppress(sqlite3.OperationalError):
            connection.execute("BEGIN EXCLUSIVE")
        yield


def PutsTheDatabaseAside(world, replacement=False):
    """And brings it back later."""
    os.rename(world.database, world.database + ".aside")
    if replacement:
        open(world.database, "w").close()
    yield
    os.rename(world.database + ".aside", world.database)


def PutsAnotherInItsPlace(world):
    return PutsTheDatabaseAside(world, replacement=True)


# By how many items may lack their row afterwards. The journal goes with a folder that is forgotten.
OTHERS = {Reads: 0, Runs: 0, PutsBack: 0, TakesTheTagOff: 1, Forgets: len(DUE), MovesTheFolder: 1, BinsTheFolder: 1,
          TakesTheRightsAway: 1, HoldsTheDatabase: 1, PutsTheDatabaseAside: 1, PutsAnotherInItsPlace: 1}
# After these no more may go than the one item that was in hand: what is in hand has left its place, too.
STOPPING = (TakesTheTagOff, Forgets, BinsTheFolder, PutsTheDatabaseAside, PutsAnotherInItsPlace)


def left(world):
    return {name for name in os.listdir(world.folder) if name in DUE}


def met(world, kind, number):
    world.reset()
    before = set()
    has_acted = False
    with contextlib.ExitStack() as stack:
        def act(_):
            nonlocal has_acted
            before.update(left(world))
            has_acted = stack.enter_context(contextlib.contextmanager(kind)(world)) is not False

        result = world.run(act=act, at=number)
    gone = before - left(world)
    problems = result.problems
    if kind in STOPPING and has_acted and len(gone) > 1:
        problems += [f"went all the same: {sorted(gone)}"]
    again = world.start_again()
    also_at = (elsewhere(world),) if kind is MovesTheFolder and has_acted else ()
    problems += again.problems + world.check(in_hand=OTHERS[kind], may_wait=True, also_at=also_at)
    return result.disturbed * bool(problems) + problems


def three_at_once(world):
    world.reset()
    with concurrent.futures.ThreadPoolExecutor() as pool:
        results = [run.result() for run in [pool.submit(world.run) for _ in range(3)]]
    again = world.start_again()
    problems = [problem for result in (*results, again) for problem in result.problems]
    return problems + world.check(in_hand=0, may_wait=True)


def run(report):
    for world in worlds(report, ("bin", "delete"), DUE, FEW_KEPT):
        count = len(world.calls())
        for kind in OTHERS:
            for number in report.some(range(1, count + 1), 3):
                report.check(f"{world.operation}, {kind.__name__} at {number}", met, world, kind, number)
        for number in range(report.count(200, 3)):
            report.check(f"{world.operation}, three at once, {number}", three_at_once, world)
