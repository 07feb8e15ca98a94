#!/usr/bin/env python3
"""Times from the start of a program to its PNG file: model3d render beside minimal_egl, a program that draws
one triangle. Both draw pictures of the same size with the same driver; minimal_egl takes one sample a pixel,
so the ratio that counts is that of --samples 1.

    bench/first_picture.py BUILD_FOLDER [--runs N] [--model FILE]... [--size WxH]
"""

import argparse
import pathlib
import tempfile

import measure

root = pathlib.Path(__file__).resolve().parent.parent
parser = argparse.ArgumentParser()
parser.add_argument("build", type=pathlib.Path)
parser.add_argument("--runs", type=int, default=30)
parser.add_argument("--model", action="append", type=pathlib.Path)
parser.add_argument("--size", default="640x480")
options = parser.parse_args()

models = options.model or [root / "assets/polyhedra/polyhedra.obj", root / "assets/gauge/gauge.obj"]

print(f"First picture, {options.size}, median of {options.runs}")
print(f"{'':42}{'wall ms':>9}{'ratio':>7}{'CPU ms':>9}{'ratio':>7}{'peak MiB':>10}")
with tempfile.TemporaryDirectory() as folder:
    cases = {"minimal_egl": [options.build / "bin/minimal_egl", f"{folder}/least.png", *options.size.split("x")]}
    for model in models:
        render = [options.build / "bin/model3d", "render", model, "-o", f"{folder}/tool.png", "--size", options.size]
        cases[f"model3d render {model.name} --samples 1"] = [*render, "--samples", "1"]
        cases[f"model3d render {model.name}"] = render
    costs = measure.run_in_turn(list(cases.values()), options.runs, {"EGL_PLATFORM": "surfaceless"})
least = costs[0]
for name, cost in zip(cases, costs):
    print(f"{name:42}{1000 * cost.wall_s:9.1f}{cost.wall_s / least.wall_s:7.2f}"
          f"{1000 * cost.cpu_s:9.1f}{cost.cpu_s / least.cpu_s:7.2f}{cost.peak_mib:10.1f}")
