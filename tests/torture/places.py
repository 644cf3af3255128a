"""Items that hold a mount, a subvolume, one of the user's fixed places or another Temporary folder, at every depth
and under every kind of directory: each stays, whole."""

import contextlib
import itertools
import os

from machine import fuse, mounts
from machine.canary import File, World, contents

DUE = {"file": File(), "tree": {"a": File()}}
DEPTHS = range(6)
# The item's name, and that of each directory on the way down.
SHAPES = {"directory": ("holder", "d"), "package": ("holder.AppDir", "d"), "hidden": ("holder", ".d"),
          "package inside": ("holder", "d.rtfd")}


# Each gives what takes it away again, where a world can't go with it.


def memory(_, place):
    return mounts.mounted(place, "-t", "tmpfs", "-o", f"uid={os.getuid()}", "none")


def bound_directory(world, place):
    return mounts.mounted(place, "--bind", world.untagged)


def bound_file(world, place):
    path = os.path.join(place, "bound")
    open(path, "w").close()
    return mounts.mounted(path, "--bind", os.path.join(world.outside, "precious"))


def served(_, place):
    """By a program of the user's."""
    return fuse.mounted(place)


def subvolume(_, place):
    os.rmdir(place)
    mounts.command("btrfs", "subvolume", "create", place)
    mounts.command("chown", str(os.getuid()), place)


def home(world, place):
    world.drive.environment |= {"HOME": place, "XDG_DATA_HOME": world.data}


def data(world, place):
    world.drive.environment["XDG_DATA_HOME"] = place


def documents(world, place):
    config = os.path.join(world.home, ".config")
    os.mkdir(config)
    with open(os.path.join(config, "user-dirs.dirs"), "w") as file:
        file.write(f'XDG_DOCUMENTS_DIR="{place}"\n')


def temporary_folder(world, place):
    (number, _), = world.drive(("add", place, 0)).of("folder")
    world.drive(("tag", number, 1, 0))


# Each by what has to be at hand for it.
BOUNDARIES = {"mount": (memory, bound_directory, bound_file), "fuse": (served,), "btrfs": (subvolume,),
              "": (home, data, documents, temporary_folder)}


def stays(report, directory, kind, operation, shape, depth):
    item, below = SHAPES[shape]
    with World(report.tools, operation, DUE, {}, directory=directory) as world:
        place = world.path(item, *[below] * depth)
        os.makedirs(place)
        with kind(world, place) or contextlib.nullcontext():
            if os.access(place, os.W_OK) and kind not in (bound_directory, bound_file, served):
                world.write(os.path.join(place, "precious"))
            before = contents(world.path(item))
            result = world.run()
            now = contents(world.path(item))
            problems = result.problems + result.failures("error")
            problems += [f"gone: {path}" for path, entry in before.items() if now.get(path) != entry]
            problems += world.check(touched={item})
        gone = {name for name, in result.of("removed")}
        if gone != set(DUE):
            problems.append(f"gone are {gone}")
        # Where the data's own place is the item, the Bin is too.
        return [problem for problem in problems
                if kind is not data or "rows" not in problem and "without a record" not in problem]


def directories(report, needed):
    """Where a world can be that has what is needed at hand."""
    reason = mounts.enter_own_mounts()
    if needed == "btrfs":
        for drive in mounts.drives(report, "btrfs"):
            yield drive.place
    elif needed in ("mount", "fuse") and reason:
        report.skip(f"{needed}: {reason}")
    elif needed == "fuse" and not os.path.exists("/dev/fuse"):
        report.skip("no file systems in user space")
    else:
        yield None


def run(report):
    for needed, kinds in BOUNDARIES.items():
        for directory in directories(report, needed):
            cases = itertools.product(kinds, ("bin", "delete"), SHAPES, DEPTHS)
            for kind, operation, shape, depth in report.some(cases, 8):
                label = f"{kind.__name__}, {operation}, {shape} at depth {depth}"
                report.check(label, stays, report, directory, kind, operation, shape, depth)
