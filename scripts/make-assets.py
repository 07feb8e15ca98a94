#!/usr/bin/env python3
"""Makes the sample models under assets/: OBJ, MTL and PNG files, the same bytes on every run.

Usage: scripts/make-assets.py [-o FOLDER] [NAME...]    all models when no name is given
"""

import argparse
import os
import sys

sys.dont_write_bytecode = True
from assets import car, gauge, piston, polyhedra, shell  # noqa: E402

MODELS = {m.__name__.split(".")[1]: m.build for m in (gauge, car, piston, shell, polyhedra)}


def main():
    root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("-o", "--output", default=os.path.join(root, "assets"), help="folder to write into")
    parser.add_argument("names", nargs="*", metavar="NAME", help="models to make: " + ", ".join(MODELS))
    args = parser.parse_args()
    for name in args.names:
        if name not in MODELS:
            parser.error("no such model: " + name)
    for name in args.names or MODELS:
        folder = os.path.join(args.output, name)
        model, radius = MODELS[name](folder)
        size = sum(os.path.getsize(os.path.join(folder, f)) for f in os.listdir(folder))
        print("%-12s %6d triangles, radius %.4f, %7d bytes" % (name, model.triangles(), radius, size))


if __name__ == "__main__":
    main()
