#!/usr/bin/env python3
"""Lets each call of the file system and the database fail, once and from then on, with every error that a disk,
a quota, rights or another process can bring about."""

import contextlib
import errno
import itertools

from machine import mounts
from machine.canary import TREE, File, Link, World
from machine.report import Report

DUE = {"file": File(), "tree": TREE, "to precious": Link("../../../outside/precious"), "last": File()}
KEPT = {".hidden item": File(), "fresh": File(fresh=True)}
CODES = ("EACCES", "EPERM", "EIO", "ENOSPC", "EDQUOT", "EROFS", "EXDEV", "ENOENT", "ELOOP", "EMFILE", "EINTR")
COPY = "put-back by a copy"
FOR_EVER = 0
AGAIN_AND_AGAIN = 3


@contextlib.contextmanager
def prepared(world, operation):
    """Gives what performs the operation."""
    world.reset()
    if operation in ("bin", "delete"):
        yield world.run
        return
    world.run()
    with world.on_another_mount() if operation == COPY else contextlib.nullcontext():
        yield world.undo


def failed(world, operation, settings):
    with prepared(world, operation) as perform:
        # Where nothing can be unlinked, each put-back by a copy leaves its original, and says so.
        in_hand = len(DUE) if operation == COPY else 1
        return problems_of(world, perform(action="fail", **settings), operation not in ("bin", "delete"), in_hand)


def problems_of(world, result, is_undoing, in_hand):
    again = world.start_again()
    problems = result.problems + again.problems + [f"next start: {line}" for line in again.of("error")]
    problems += world.check(in_hand, is_undoing=is_undoing, may_wait=True)
    if not is_undoing:
        problems += [f"next run: {problem}" for problem in world.run_whole() + world.check()]
    if problems and result.calls:
        problems.insert(0, f"failed at {result.calls[0].function} {result.calls[0].path}")
    return problems


def cases(world, operation):
    with prepared(world, operation) as perform:
        calls = perform(action="trace").calls
    numbers = {}
    for call in calls:
        number = numbers[call.function] = numbers.get(call.function, 0) + 1
        for code, lasts in itertools.product(CODES, (False, True)):
            # No call is interrupted for ever.
            count = 1 if not lasts else AGAIN_AND_AGAIN if code == "EINTR" else FOR_EVER
            settings = {"errno": getattr(errno, code), "count": count, "at": call.number}
            if lasts:
                settings |= {"function": call.function, "at": number}
            label = f"{operation}, {code} {'from then on' if lasts else 'once'} at {call.number}"
            yield label, settings


def main():
    report = Report(__doc__)
    operations = {"bin": ["bin", "put-back"], "delete": ["delete"]}
    if reason := mounts.enter_own_mounts():
        report.skip(f"put-back by a copy: {reason}")
    else:
        operations["bin"].append(COPY)
    for disposal in operations:
        with World(report.tools, disposal, DUE, KEPT) as world:
            for operation in operations[disposal]:
                for label, settings in report.some(cases(world, operation), 25):
                    if report.wants(label):
                        report.case(label, failed(world, operation, settings))
    report.end()


if __name__ == "__main__":
    main()
