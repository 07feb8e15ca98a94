"""A scene with a warm point light and a cool directional one, for lighting_mode=model.

orbit_RY carries the lamp around the pedestal, lamp_TY (0.8 to 1.15) raises it; sun_RX and sun_RZ turn the
directional light.
"""

import math
import os

from assets.gauge import face_uv
from assets.mesh import Frame, Model
from assets.paint import Canvas, noise
from assets.robot import up
from assets.scene import Group, Light, save
from assets.scenelib import DIRECTIONAL, POINT
from assets.shapes import arc, lathe, rounded, rounded_box

FLOOR, RING = 1.6, 1.02
PLACES = [(RING * math.sin(math.radians(a)), RING * math.cos(math.radians(a))) for a in range(30, 390, 60)]


def floor_texture(size=512):
    """Smooth plaster with fine circles; darker where things touch it."""
    canvas = Canvas(size, size)
    mid, px = size / 2, size / 2 / FLOOR

    def base(x, y):
        r = math.hypot(x - mid, y - mid) / px
        v = 0.82 + 0.02 * (noise(x / 2.5, y / 2.5, 5) - 0.5)
        v *= 1 - 0.10 * max(0.0, 1 - abs((r * 10) % 1 - 0.5) * 22)
        return v, v, v

    canvas.each(base)
    canvas.disc(mid, mid, 0.50 * px, (0, 0, 0), 0.6, 34)
    for x, z in PLACES:
        canvas.disc(mid + x * px, mid + z * px, 0.10 * px, (0, 0, 0), 0.75, 46)
    return canvas


def ball(model, material, radius, frame, segments=56):
    steps = segments // 2
    outline = [(nx * radius, ny * radius, nx, ny) for nx, ny in arc(0, 0, 1, -89.99, 89.99, steps)]
    lathe(model, material, outline, segments, frame)


def stage(model):
    rim = [(FLOOR - 0.05, -0.08), (FLOOR, -0.08, 0.02), (FLOOR, 0, 0.02), (FLOOR - 0.03, 0)]
    lathe(model, "stone", rounded(rim), 96, up())
    rings = [(FLOOR - 0.03) * (1 - k / 30) for k in range(30)] + [0.0]
    lathe(model, "floor", [(r, 0, 0, 1) for r in rings], 96, up(), uv=face_uv(FLOOR))
    steps = [(0.52, 0), (0.52, 0.09, 0.02), (0.42, 0.09, 0.01), (0.42, 0.18, 0.02), (0.30, 0.18, 0.01)]
    steps += [(0.26, 0.26, 0.05), (0.25, 0.38, 0.04), (0.31, 0.42, 0.02), (0.31, 0.47, 0.015), (0.0, 0.47)]
    lathe(model, "stone", rounded(steps), 80, up())


def exhibits(model):
    ball(model, "chalk", 0.34, up(0, 0.47 + 0.335, 0), 72)
    for (x, z), material in zip(PLACES, ("jade", None, "brass", "graphite", None, "lacquer")):
        if material:
            ball(model, material, 0.22, up(x, 0.22, z))
    x, z = PLACES[1]
    tube = [(0.17 + 0.075 * nx, 0.075 * ny, nx, ny) for nx, ny in arc(0, 0, 1, -180, 180, 22)]
    for k in range(3):  # a pile of rings
        lathe(model, ("brass", "chalk", "brass")[k], tube, 48, up(x, 0.075 + 0.148 * k, z))
    x, z = PLACES[4]
    c, s = math.cos(math.radians(25)), math.sin(math.radians(25))
    rounded_box(model, "lacquer", (0.34, 0.34, 0.34), 0.04, Frame((x, 0.17, z), (c, 0, -s), (0, 1, 0), (s, 0, c)), 5)


def bulb(model):
    """At the group's origin, where the light is; its rod slides in the post."""
    ball(model, "bulb", 0.055, up(), 32)
    cap = [(0.0, -0.082), (0.028, -0.082, 0.004), (0.034, -0.04, 0.004), (0.02, -0.04)]
    lathe(model, "brass", rounded(cap), 32, up())
    lathe(model, "steel", rounded([(0.0, -0.75), (0.010, -0.75), (0.010, -0.08)]), 20, up())


def post(model, frame):
    foot = [(0.08, 0.0), (0.08, 0.02, 0.008), (0.017, 0.03, 0.02), (0.017, 0.40)]
    lathe(model, "graphite", rounded(foot), 40, frame)
    collar = [(0.017, 0.39), (0.023, 0.40, 0.003), (0.023, 0.43, 0.004), (0.009, 0.43)]
    lathe(model, "brass", rounded(collar), 32, frame)


def build(library, folder):
    palette = Model("")
    palette.material("chalk", (0.85, 0.85, 0.85), (0.88, 0.87, 0.85), (0.04, 0.04, 0.04), 6)
    palette.material("stone", (0.50, 0.50, 0.52), (0.55, 0.55, 0.57), (0.10, 0.10, 0.10), 12)
    palette.material("lacquer", (0.62, 0.07, 0.07), (0.72, 0.08, 0.07), (0.85, 0.85, 0.85), 110)
    palette.material("brass", (0.55, 0.40, 0.14), (0.62, 0.45, 0.16), (0.95, 0.80, 0.45), 28)
    palette.material("jade", (0.12, 0.42, 0.30), (0.16, 0.55, 0.38), (0.45, 0.50, 0.46), 48)
    palette.material("graphite", (0.08, 0.08, 0.09), (0.12, 0.12, 0.13), (0.80, 0.80, 0.85), 64)
    palette.material("steel", (0.40, 0.40, 0.42), (0.45, 0.45, 0.47), (0.75, 0.75, 0.78), 36)
    palette.material("bulb", (1, 0.9, 0.7), (0.1, 0.1, 0.1), ke=(1.0, 0.86, 0.58))
    palette.material("floor", (0.80, 0.80, 0.80), (0.80, 0.80, 0.80), (0.04, 0.04, 0.04), 10, texture="floor.png")
    materials = palette.materials

    root = Group("lights", (0, -0.45, 0), reach=1.75)
    stage(root.model(materials))
    exhibits(root.model(materials))
    orbit = root.group("orbit", rotation=(0, 60, 0))
    post(orbit.model(materials), up(0, 0, 0.70))
    lamp = orbit.group("lamp", (0, 0.80, 0.70))
    bulb(lamp.model(materials))
    lamp.add(Light("bulb", POINT, (1.0, 0.72, 0.42), 85))
    sun = root.group("sun", rotation=(15, 0, 48))
    sun.add(Light("sky", DIRECTIONAL, (0.42, 0.58, 1.0), 60))

    floor_texture().save(os.path.join(folder, "floor.png"))
    return save(library, os.path.join(folder, "lights.qel"), root)
