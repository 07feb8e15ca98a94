#!/usr/bin/env python3
"""Makes the sample scenes under assets/ through the C interface of the built plug-in, the same bytes on every run.

Usage: scripts/make-scenes.py [--library FILE] [-o FOLDER] [NAME...]    all scenes when no name is given
"""

import argparse
import os
import sys

sys.dont_write_bytecode = True
from assets import lights, robot, scenelib, speedometer  # noqa: E402

SCENES = {m.__name__.split(".")[1]: m.build for m in (speedometer, robot, lights)}


def main():
    root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument(
        "--library",
        default=os.path.join(root, "build/release/lib/libmodel3d.so"),
        help="the plug-in, with libkora.so beside it [build/release/lib/libmodel3d.so]",
    )
    parser.add_argument("-o", "--output", default=os.path.join(root, "assets"), help="folder to write into")
    parser.add_argument("names", nargs="*", metavar="NAME", help="scenes to make: " + ", ".join(SCENES))
    args = parser.parse_args()
    for name in args.names:
        if name not in SCENES:
            parser.error("no such scene: " + name)
    try:
        library = scenelib.Library(args.library)
    except OSError as error:
        sys.exit("make-scenes: %s; build the plug-in, or name it with --library" % error)
    for name in args.names or SCENES:
        folder = os.path.join(args.output, name)
        try:
            os.makedirs(folder, exist_ok=True)
            triangles, vertices = SCENES[name](library, folder)
        except OSError as error:
            sys.exit("make-scenes: %s" % error)
        size = os.path.getsize(os.path.join(folder, name + ".qel"))
        print("%-12s %6d triangles, %6d vertices, %7d bytes" % (name, triangles, vertices, size))


if __name__ == "__main__":
    main()
