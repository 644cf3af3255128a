#!/usr/bin/env python3
"""Items that hold a mount, a subvolume, one of the user's fixed places or another Temporary folder, at every depth
and under every kind of directory: each stays, whole."""

import contextlib
import itertools
import os

from machine import fuse, mounts
from machine.canary import File, World, as_user, contents, own
from machine.report import Report

DUE = {"file": File(), "tree": {"a": File()}}
DEPTHS = range(6)
# The item's name, and that of each directory on the way down.
SHAPES = {"directory": ("holder", "d"), "package": ("holder.AppDir", "d"), "hidden": ("holder", ".d"),
          "package inside": ("holder", "d.rtfd")}


def memory(world, place, stack):
    stack.enter_context(mounts.mounted(place, "-t", "tmpfs", "none"))
    own(place)


def bound_directory(world, place, stack):
    stack.enter_context(mounts.mounted(place, "--bind", world.untagged))


def bound_file(world, place, stack):
    path = os.path.join(place, "bound")
    with as_user(), open(path, "w"):
        pass
    stack.enter_context(mounts.mounted(path, "--bind", os.path.join(world.outside, "precious")))


def served(world, place, stack):
    """By a program of the user's."""
    stack.enter_context(fuse.mounted(place))


def subvolume(world, place, stack):
    os.rmdir(place)
    mounts.command("btrfs", "subvolume", "create", place)
    own(place)


def home(world, place, stack):
    stack.callback(world.drive.environment.__setitem__, "HOME", world.home)
    world.drive.environment |= {"HOME": place, "XDG_DATA_HOME": world.data}


def data(world, place, stack):
    stack.callback(world.drive.environment.pop, "XDG_DATA_HOME")
    world.drive.environment["XDG_DATA_HOME"] = place


def documents(world, place, stack):
    config = os.path.join(world.home, ".config")
    with as_user():
        os.makedirs(config, exist_ok=True)
        with open(os.path.join(config, "user-dirs.dirs"), "w") as file:
            file.write(f'XDG_DOCUMENTS_DIR="{place}"\n')
    stack.callback(os.unlink, os.path.join(config, "user-dirs.dirs"))


def temporary_folder(world, place, stack):
    result = world.drive(("add", place, 0))
    (number, _), = result.of("folder")
    world.drive(("tag", number, 1, 0))


# Each by what has to be at hand for it.
BOUNDARIES = {"mount": (memory, bound_directory, bound_file), "fuse": (served,), "btrfs": (subvolume,),
              "": (home, data, documents, temporary_folder)}


def stays(world, prepare, shape, depth):
    item, directory = SHAPES[shape]
    world.reset()
    place = world.path(item, *[directory] * depth)
    with contextlib.ExitStack() as stack:
        with as_user():
            os.makedirs(place)
        prepare(world, place, stack)
        with as_user():
            if os.access(place, os.W_OK) and prepare not in (bound_directory, bound_file, served):
                world.write(os.path.join(place, "precious"))
        before = contents(world.path(item))
        result = world.run()
        now = contents(world.path(item))
        problems = result.problems + [str(line) for line in result.of("error")]
        problems += [f"gone: {path}" for path, entry in before.items() if now.get(path) != entry]
        problems += world.check(touched={item})
        gone = {line[0] for line in result.of("removed")}
        if gone != set(DUE):
            problems.append(f"gone are {gone}")
        # Where the data's own place is the item, the Bin is too.
        if prepare is data:
            problems = [problem for problem in problems if "rows" not in problem and "without a record" not in problem]
    return problems


def directories(report, needed):
    """Where a world can be that has what is needed at hand."""
    reason = mounts.enter_own_mounts()
    if needed == "btrfs":
        for drive in mounts.drives(report, ("btrfs",)):
            yield drive.place
    elif needed in ("mount", "fuse") and reason:
        report.skip(f"{needed}: {reason}")
    elif needed == "fuse" and not os.path.exists("/dev/fuse"):
        report.skip("no file systems in user space")
    else:
        yield None


def main():
    report = Report(__doc__)
    for needed, kinds in BOUNDARIES.items():
        for directory in directories(report, needed):
            cases = itertools.product(kinds, ("bin", "delete"), SHAPES, DEPTHS)
            for kind, disposal, shape, depth in report.some(cases, 8):
                label = f"{kind.__name__}, {disposal}, {shape} at depth {depth}"
                if report.wants(label):
                    with World(report.tools, disposal, DUE, {}, directory=directory) as world:
                        report.case(label, stays(world, kind, shape, depth))
    report.end()


if __name__ == "__main__":
    main()
