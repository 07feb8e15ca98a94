#!/usr/bin/env python3
"""Holds the instruction counts of a few workloads to the recorded ones.

  instructions.py --program build/release/bin/workload --compiler TEXT [--update] bench/instructions.txt
  instructions.py --program build/release/bin/workload --ratios
  instructions.py --program build/release/bin/workload --chosen

Counted are the instructions of our own program and plug-in: those of libc, libm and the host differ from
machine to machine. They depend on the compiler, so another one than the recorded makes the check skip itself.
--ratios counts everything, and prints what a frame and a dirty check cost beside the least they could.
--chosen counts everything, too: what files can be made to hold must not cost much more than the same of the ordinary.
"""
import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile

TOLERANCE = 0.05
MOST_CHOSEN = 1.5
SKIPPED = 77
OURS = ("workload", "libmodel3d.so")


def count(program, workload):
    """The instructions of one workload, "NAME SIZE", by object file."""
    with tempfile.TemporaryDirectory() as folder:
        out = os.path.join(folder, "out")
        subprocess.run(["valgrind", "-q", "--tool=callgrind", "--toggle-collect=measured",
                        "--callgrind-out-file=" + out, program, *workload.split()], check=True)
        return by_object(out)


def by_object(path):
    names, totals, current, called = {}, {}, "", False
    with open(path, encoding="utf-8") as out:
        for line in out:
            if line.startswith("ob="):
                number, name = re.match(r"ob=(\(\d+\))(?: (.*))?", line).groups()
                if name:
                    names[number] = os.path.basename(name)
                current = names[number]
            elif line.startswith("cob="):
                number, name = re.match(r"cob=(\(\d+\))(?: (.*))?", line).groups()
                if name:
                    names[number] = os.path.basename(name)
            elif line.startswith("calls="):
                called = True  # the next line is the callee's
            elif line[0] in "0123456789+-*":
                if not called:
                    totals[current] = totals.get(current, 0) + int(line.split()[1])
                called = False
    return totals


def ours(program, workload):
    totals = count(program, workload)
    return sum(n for name, n in totals.items() if name in OURS)


def read(path):
    with open(path, encoding="utf-8") as lines:
        rows = [line.split() for line in lines if not line.startswith("#")]
    compiler = next(" ".join(row[1:]) for row in rows if row[0] == "compiler")
    return compiler, {" ".join(row[:2]): int(row[2]) for row in rows if row[0] != "compiler"}


def update(path, program, compiler):
    workloads = read(path)[1]
    with open(path, encoding="utf-8") as lines:
        head = [line for line in lines if line.startswith("#")]
    rows = [f"{w} {ours(program, w)}\n" for w in workloads]
    with open(path, "w", encoding="utf-8") as out:
        out.writelines(head + [f"compiler {compiler}\n"] + rows)


def check(path, program, compiler):
    recorded_compiler, workloads = read(path)
    if recorded_compiler != compiler:
        print(f"skipped: recorded with {recorded_compiler}, this is {compiler}")
        return SKIPPED
    changed = 0
    for workload, recorded in workloads.items():
        measured = ours(program, workload)
        change = measured / recorded - 1
        changed += abs(change) > TOLERANCE
        print(f"{workload:12} recorded {recorded:12} measured {measured:12} {100 * change:+6.2f} %"
              f"{'' if abs(change) <= TOLERANCE else '  <--'}")
    if changed:
        print("If that is meant: cmake --build build/release --target record-instructions")
    return 1 if changed else 0


def ratios(program):
    counts = {}
    for workload, parts in (("frame", 1000), ("calls", 1000), ("lines", 1000), ("dirty", 9000), ("lookups", 9000)):
        totals = count(program, f"{workload} 1000")
        counts[workload] = sum(totals.values()) / parts
        print(f"{workload}: {counts[workload]:.1f} each;", ", ".join(
            f"{name} {n / parts:.1f}" for name, n in sorted(totals.items(), key=lambda t: -t[1])))
    print(f"frame / calls {counts['frame'] / counts['calls']:.2f}, "
          f"frame / calls and log lines {counts['frame'] / counts['lines']:.2f}, "
          f"dirty / lookups {counts['dirty'] / counts['lookups']:.2f}")


def chosen(program):
    failed = 0
    for made, ordinary, size in (("colliding-materials", "materials", 10), ("colliding-keys", "keys", 10),
                                 ("same-library", "libraries", 8)):
        counts = [sum(count(program, f"{name} {size}").values()) for name in (made, ordinary)]
        failed += counts[0] > MOST_CHOSEN * counts[1]
        print(f"{made} / {ordinary}: {counts[0]} / {counts[1]} = {counts[0] / counts[1]:.2f}")
    return 1 if failed else 0


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True)
    parser.add_argument("--compiler", default="")
    parser.add_argument("--update", action="store_true")
    parser.add_argument("--ratios", action="store_true")
    parser.add_argument("--chosen", action="store_true")
    parser.add_argument("recorded", nargs="?")
    arguments = parser.parse_args()
    if not shutil.which("valgrind"):
        print("skipped: valgrind was not found")
        return SKIPPED
    if arguments.ratios:
        return ratios(arguments.program)
    if arguments.chosen:
        return chosen(arguments.program)
    if arguments.update:
        return update(arguments.recorded, arguments.program, arguments.compiler)
    return check(arguments.recorded, arguments.program, arguments.compiler)


if __name__ == "__main__":
    sys.exit(main())
