"""At every call of a run someone else acts meanwhile: another run, a reading, a put-back, the tag that is taken off,
the folder forgotten, the database held or put out of its place."""

import concurrent.futures
import contextlib
import os
import sqlite3

from machine.canary import FAR_FUTURE, FEW_KEPT, SMALL, TAGS, File, worlds

DUE = SMALL | {"other": File(), "last": {"a": File()}}


def elsewhere(world):
    return os.path.join(world.home, "Elsewhere")


def moves_the_folder(world, later, place=None):
    """The run may go on with it, wherever it lies."""
    place = place or elsewhere(world)
    os.makedirs(os.path.dirname(place), mode=0o700, exist_ok=True)
    os.rename(world.folder, place)
    later.callback(world.follow_again)
    later.callback(os.rename, place, world.folder)


def bins_the_folder(world, later):
    """As a file manager does. What lies in the Bin isn't cleared."""
    os.makedirs(os.path.join(world.trash, "info"), mode=0o700, exist_ok=True)
    moves_the_folder(world, later, os.path.join(world.trash, "files", "Temporary"))


def takes_the_rights_away(world, later):
    """To write in the folder."""
    os.chmod(world.folder, 0o500)
    later.callback(os.chmod, world.folder, 0o700)


def holds_the_database(world, later):
    """For as long as the run lasts."""
    connection = sqlite3.connect(world.database, isolation_level=None, timeout=0)
    later.callback(connection.close)
    with contextlib.suppress(sqlite3.OperationalError):
        connection.execute("BEGIN EXCLUSIVE")


def puts_the_database_aside(world, later, replacement=False):
    os.rename(world.database, world.database + ".aside")
    if replacement:
        open(world.database, "w").close()
    later.callback(os.rename, world.database + ".aside", world.database)


# Each acts, answers False where that came to nothing, and leaves for later what brings back what the checks need.
# With it goes how many items may lack their row afterwards; the journal goes with a folder that is forgotten.
OTHERS = {
    # Must not take what the run has in its hand for what a killed one had left.
    "Reads": (lambda world, _: world.drive(("status", 1, FAR_FUTURE)), 0),
    "Runs": (lambda world, _: world.run(), 0),
    "PutsBack": (lambda world, _: world.undo(), 0),
    "TakesTheTagOff": (lambda world, _: os.removexattr(world.folder, TAGS), 1),
    # In the midst of the run's own writing the database takes nothing else.
    "Forgets": (lambda world, _: not world.drive(("forget", 1)).of("error"), len(DUE)),
    "MovesTheFolder": (moves_the_folder, 1), "BinsTheFolder": (bins_the_folder, 1),
    "TakesTheRightsAway": (takes_the_rights_away, 1), "HoldsTheDatabase": (holds_the_database, 1),
    "PutsTheDatabaseAside": (puts_the_database_aside, 1),
    "PutsAnotherInItsPlace": (lambda world, later: puts_the_database_aside(world, later, replacement=True), 1)}
# After these no more may go than the one item that was in hand: what is in hand has left its place, too.
STOPPING = ("TakesTheTagOff", "Forgets", "BinsTheFolder", "PutsTheDatabaseAside", "PutsAnotherInItsPlace")


def left(world):
    return {name for name in os.listdir(world.folder) if name in DUE}


def met(world, other, number):
    act_once, lacking = OTHERS[other]
    world.reset()
    before = set()
    has_acted = False
    with contextlib.ExitStack() as later:
        def act(_):
            nonlocal has_acted
            before.update(left(world))
            has_acted = act_once(world, later) is not False

        result = world.run(act=act, at=number)
    gone = before - left(world)
    problems = result.problems
    if other in STOPPING and has_acted and len(gone) > 1:
        problems += [f"went all the same: {sorted(gone)}"]
    again = world.start_again()
    also_at = (elsewhere(world),) if other == "MovesTheFolder" and has_acted else ()
    problems += again.problems + world.check(in_hand=lacking, may_wait=True, also_at=also_at)
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
        for other in OTHERS:
            for number in report.some(range(1, count + 1), 3):
                report.check(f"{world.operation}, {other} at {number}", met, world, other, number)
        for number in range(report.count(200, 3)):
            report.check(f"{world.operation}, three at once, {number}", three_at_once, world)
