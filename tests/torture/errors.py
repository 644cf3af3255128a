"""Lets each call of the file system and the database fail, once and from then on, with every error that a disk,
a quota, rights or another process can bring about."""

import errno

from machine.canary import COPY, FEW_KEPT, TREE, File, Link, worlds

DUE = {"file": File(), "tree": TREE, "to precious": Link("../../../outside/precious"), "last": File()}
CODES = ("EACCES", "EPERM", "EIO", "ENOSPC", "EDQUOT", "EROFS", "EXDEV", "ENOENT", "ELOOP", "EMFILE", "EINTR")
FOR_EVER = 0
AGAIN_AND_AGAIN = 3


def failed(world, code, calls):
    with world.prepared():
        # Where nothing can be unlinked, each put-back by a copy leaves its original, and says so.
        in_hand = len(DUE) if world.operation == COPY else 1
        return world.problems_after(world.perform(act=lambda _: code, **calls), in_hand)


def cases(world):
    numbers = {}
    for call in world.calls():
        number = numbers[call.function] = numbers.get(call.function, 0) + 1
        for code in CODES:
            label = f"{world.operation}, {code} %s at {call.number}"
            yield label % "once", getattr(errno, code), {"at": call.number}
            # No call is interrupted for ever.
            count = AGAIN_AND_AGAIN if code == "EINTR" else FOR_EVER
            calls = {"at": number, "function": call.function, "count": count}
            yield label % "from then on", getattr(errno, code), calls


def run(report):
    for world in worlds(report, ("bin", "put-back", COPY, "delete"), DUE, FEW_KEPT):
        for label, code, calls in report.some(cases(world), 25):
            report.check(label, failed, world, code, calls)
