#!/usr/bin/env python3
"""Lets each call of the file system and the database fail, once and from then on, with every error that a disk,
a quota, rights or another process can bring about."""

import errno
import itertools

from machine.canary import TREE, File, Link, World
from machine.report import Report

DUE = {"file": File(), "tree": TREE, "to precious": Link("../../../outside/precious"), "last": File()}
KEPT = {".hidden item": File(), "fresh": File(fresh=True)}
CODES = ("EACCES", "EPERM", "EIO", "ENOSPC", "EDQUOT", "EROFS", "EXDEV", "ENOENT", "ELOOP", "EMFILE", "EINTR")
FOR_EVER = 0
AGAIN_AND_AGAIN = 3


def failed(world, operation, settings):
    world.reset()
    if operation == "put-back":
        world.run()
    perform = world.undo if operation == "put-back" else world.run
    result = perform(action="fail", **settings)
    again = world.start_again()
    problems = result.problems + again.problems + [f"next start: {line}" for line in again.of("error")]
    problems += world.check(is_undoing=operation == "put-back", may_wait=True)
    if operation != "put-back":
        problems += [f"next run: {problem}" for problem in world.run_whole() + world.check()]
    if problems and result.calls:
        problems.insert(0, f"failed at {result.calls[0].function} {result.calls[0].path}")
    return problems


def cases(world, operation):
    world.reset()
    if operation == "put-back":
        world.run()
    calls = (world.undo if operation == "put-back" else world.run)(action="trace").calls
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
    for disposal in ("bin", "delete"):
        with World(report.tools, disposal, DUE, KEPT) as world:
            for operation in (disposal, "put-back") if disposal == "bin" else (disposal,):
                for label, settings in report.some(cases(world, operation), 25):
                    if report.wants(label):
                        report.case(label, failed(world, operation, settings))
    report.end()


if __name__ == "__main__":
    main()
