"""Runs programs and says what they cost; a helper of the scripts beside it."""

import os
import resource
import statistics
import time
from typing import NamedTuple


class Cost(NamedTuple):
    wall_s: float
    cpu_s: float
    peak_mib: float  # nan below what this script has itself: the kernel counts from before the program starts


def run(command, environment=None):
    """Runs a program to its end, silently; raises when it fails."""
    start = time.perf_counter()
    child = os.fork()
    if child == 0:
        try:
            nothing = os.open(os.devnull, os.O_RDWR)
            for stream in range(3):
                os.dup2(nothing, stream)
            os.execvpe(command[0], command, {**os.environ, **(environment or {})})
        finally:
            os._exit(127)
    _, status, usage = os.wait4(child, 0)
    wall_s = time.perf_counter() - start
    if status != 0:
        raise RuntimeError(f"{' '.join(map(str, command))}: status {os.waitstatus_to_exitcode(status)}")
    known = usage.ru_maxrss > 1.1 * resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
    return Cost(wall_s, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024 if known else float("nan"))


def run_in_turn(commands, count, environment=None):
    """Runs all commands `count` times, each time in another order, and returns their medians in order:
    a machine that is busy for a while slows all of them alike."""
    costs = [[] for _ in commands]
    for command in commands:
        run(command, environment)  # fills the caches
    for turn in range(count):
        for k in range(len(commands)):
            chosen = (turn + k) % len(commands)
            costs[chosen].append(run(commands[chosen], environment))
    return [Cost(*map(statistics.median, zip(*of_one))) for of_one in costs]
