#!/usr/bin/env python3
"""Lets each call of the file system and the database fail, once and from then on, with every error that a disk,
a quota, rights or another process can bring about."""

import errno
import itertools

from machine import mounts
from machine.canary import COPY, FEW_KEPT, TREE, File, Link, World
from machine.report import Report

DUE = {"file": File(), "tree": TREE, "to precious": Link("../../../outside/precious"), "last": File()}
CODES = ("EACCES", "EPERM", "EIO", "ENOSPC", "EDQUOT", "EROFS", "EXDEV", "ENOENT", "ELOOP", "EMFILE", "EINTR")
FOR_EVER = 0
AGAIN_AND_AGAIN = 3


def failed(world, operation, settings):
    with world.prepared(operation) as perform:
        # Where nothing can be unlinked, each put-back by a copy leaves its original, and says so.
        in_hand = len(DUE) if operation == COPY else 1
        return world.problems_after(perform(action="fail", **settings), operation, in_hand)


def cases(world, operation):
    numbers = {}
    for call in world.calls(operation):
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
        report.skip(f"{COPY}: {reason}")
    else:
        operations["bin"].append(COPY)
    for disposal in operations:
        with World(report.tools, disposal, DUE, FEW_KEPT) as world:
            for operation in operations[disposal]:
                for label, settings in report.some(cases(world, operation), 25):
                    report.check(label, failed, world, operation, settings)
    report.end()


if __name__ == "__main__":
    main()
