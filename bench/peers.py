#!/usr/bin/env python3
"""Compares what we make with what a user would otherwise pick: loading of OBJ files with tinyobjloader and
Assimp, pictures of them with F3D. Whole processes are measured, from start to end; a ratio above 1 says that
the peer takes more. Peers that are not installed are left out.

    bench/peers.py BUILD_FOLDER [--runs N]
"""

import argparse
import contextlib
import pathlib
import re
import shutil
import subprocess
import tempfile

import measure

root = pathlib.Path(__file__).resolve().parent.parent
models = [root / "assets" / name for name in ("polyhedra/polyhedra.obj", "gauge/gauge.obj", "car/car.obj")]
# What model3d itself needs of the system.
our_packages = "libegl1 libgles2 libegl-mesa0 libgl1-mesa-dri libpng16-16 libjpeg62-turbo libstdc++6".split()


def packages_with_dependencies(packages):
    """Names of packages and all that they need on an empty system, in the words of apt's simulation."""
    command = ["apt-get", "-s", "-o", "Dir::State::status=/dev/null", "install", "--no-install-recommends", *packages]
    found = subprocess.run(command, capture_output=True, text=True)
    return set(re.findall(r"^Inst (\S+)", found.stdout, re.M)) if found.returncode == 0 else set()


def installed_kib(packages):
    shown = subprocess.run(["apt-cache", "show", "--no-all-versions", *packages], capture_output=True, text=True)
    return sum(int(size) for size in re.findall(r"^Installed-Size: (\d+)", shown.stdout, re.M))


def stripped_kib(files):
    with tempfile.NamedTemporaryFile() as stripped:
        total = 0
        for file in files:
            subprocess.run(["strip", "-o", stripped.name, file], check=True)
            total += pathlib.Path(stripped.name).stat().st_size
        return total / 1024


@contextlib.contextmanager
def display():
    """A screen in memory; yields its name."""
    server = subprocess.Popen(["Xvfb", "-displayfd", "1", "-screen", "0", "1280x1024x24"],
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    try:
        yield ":" + server.stdout.readline().strip()
    finally:
        server.terminate()
        server.wait()


def print_rows(what, names, costs):
    for name, cost in zip(names, costs):
        ratio = cost.wall_s / costs[0].wall_s, cost.cpu_s / costs[0].cpu_s, cost.peak_mib / costs[0].peak_mib
        print(f"{what:24}{name:15}{1000 * cost.wall_s:10.1f}{ratio[0]:7.2f}{1000 * cost.cpu_s:10.1f}{ratio[1]:7.2f}"
              f"{cost.peak_mib:10.1f}{ratio[2]:7.2f}", flush=True)


def compare_loading(build, runs, folder):
    loaders = {name: build / f"bin/peer_load_{name}" for name in ("model3d", "tinyobjloader", "assimp")}
    for name in [name for name, program in loaders.items() if not program.exists()]:
        print(f"{name} is not installed")
        del loaders[name]
    sheet = folder / "sheet.obj"
    subprocess.run([loaders["model3d"], "--sheet", "1000", sheet], check=True)
    for model in [*models, sheet]:
        count = runs if model != sheet else 3
        costs = measure.run_in_turn([[program, model] for program in loaders.values()], count)
        print_rows(f"load {model.name}", loaders, costs)


def compare_rendering(build, runs, folder):
    if not shutil.which("f3d") or not shutil.which("Xvfb"):
        print("f3d and Xvfb are not both installed")
        return
    with display() as screen:
        for model in models:
            commands = [[build / "bin/model3d", "render", model, "-o", folder / "ours.png", "--size", "640x480"],
                        ["f3d", f"--output={folder / 'f3d.png'}", "--resolution=640,480", model]]
            print_rows(f"render {model.name}", ["model3d", "f3d"],
                       measure.run_in_turn(commands, runs, {"DISPLAY": screen}))


def compare_sizes(build):
    ours = [build / "lib/libmodel3d.so", build / "lib/libkora.so", build / "bin/model3d"]
    size = stripped_kib(ours)
    print(f"\n{'installed':24}{'KiB':>10}{'ratio':>8}   beside the packages that model3d needs")
    print(f"{'model3d':24}{size:10.0f}{1:8.1f}   {', '.join(path.name for path in ours)}, stripped")
    needed = packages_with_dependencies(our_packages)
    for peer in (["libtinyobjloader2rc10"], ["libassimp5"], ["f3d"]):
        extra = packages_with_dependencies(peer) - needed
        if not extra:
            print(f"{peer[0]} cannot be installed here")
            continue
        peer_size = installed_kib(sorted(extra))
        print(f"{peer[0]:24}{peer_size:10}{peer_size / size:8.1f}   {len(extra)} packages")


parser = argparse.ArgumentParser()
parser.add_argument("build", type=pathlib.Path)
parser.add_argument("--runs", type=int, default=15)
options = parser.parse_args()
print(f"{'':39}{'wall ms':>10}{'ratio':>7}{'CPU ms':>10}{'ratio':>7}{'peak MiB':>10}{'ratio':>7}")
with tempfile.TemporaryDirectory() as scratch:
    compare_loading(options.build, options.runs, pathlib.Path(scratch))
    compare_rendering(options.build, options.runs, pathlib.Path(scratch))
compare_sizes(options.build)
