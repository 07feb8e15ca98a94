"""Compares a built library with what it may show: libraries it needs, paths, exported symbols.

The symbols are those that the public headers mark for export. Anything more would leak an internal
name into every program that loads the library; anything less would break one.
"""

import argparse
import pathlib
import re
import subprocess
import sys


def declared(folders, mark):
    names = set()
    for header in (path for folder in folders for path in sorted(folder.glob("*.h"))):
        text = re.sub(r"/\*.*?\*/", " ", header.read_text(), flags=re.S)
        text = re.sub(r"^[ \t]*#.*$", " ", text, flags=re.M)
        for declaration in re.findall(rf"\b{mark}\b([^;]*);", text):
            # A function's name stands before its first parenthesis, a variable's at the end.
            names.add(re.search(r"(\w+)\s*(?:\[\w*\]\s*)?$", declaration.split("(")[0]).group(1))
    return names


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("library")
    parser.add_argument("--readelf", required=True)
    parser.add_argument("--mark", required=True)
    parser.add_argument("--headers", required=True, nargs="+", type=pathlib.Path)
    parser.add_argument("--soname", required=True)
    parser.add_argument("--needed", nargs="+")
    options = parser.parse_args()

    def readelf(what):
        command = [options.readelf, "--wide", what, options.library]
        return subprocess.run(command, check=True, capture_output=True, text=True).stdout

    faults = []

    def compare(what, expected, found):
        if missing := sorted(expected - found):
            faults.append(f"{what} missing: {' '.join(missing)}")
        if extra := sorted(found - expected):
            faults.append(f"{what} too many: {' '.join(extra)}")

    entries = re.findall(r"\((\w+)\)\s*(.*)", readelf("--dynamic"))
    tags = {tag for tag, _ in entries}
    values = lambda wanted: {re.search(r"\[(.*)\]", text).group(1) for tag, text in entries if tag == wanted}
    compare("name", {options.soname}, values("SONAME"))
    if options.needed:
        compare("needed library", set(options.needed), values("NEEDED"))
        # The host decides where the plug-in's libraries come from.
        compare("search path", set(), tags & {"RPATH", "RUNPATH"})
    compare("text relocations", set(), tags & {"TEXTREL"})

    # Number, value, size, type, binding, visibility, section, name.
    symbols = [line.split() for line in readelf("--dyn-syms").splitlines() if re.match(r"\s*\d+:", line)]
    exported = {s[7].split("@")[0] for s in symbols
                if len(s) >= 8 and s[4] in ("GLOBAL", "WEAK", "UNIQUE") and s[6] not in ("UND", "ABS")}
    expected = declared(options.headers, options.mark)
    if not expected:
        faults.append(f"no {options.mark} declaration in {' '.join(map(str, options.headers))}")
    compare("exported symbol", expected, exported)

    for fault in faults:
        print(f"{options.library}: {fault}", file=sys.stderr)
    return 1 if faults else 0


sys.exit(main())
