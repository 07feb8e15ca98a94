"""A scene of a jointed robot that picks up a block, joint by joint below one another.

base_RY, shoulder_RZ, elbow_RZ and wrist_RZ turn the joints, negative towards the block; at 0 the arm stands
upright. finger_left_TX (negative) and finger_right_TX (positive) open the gripper. The block is the group part.
"""

import math
import os

from assets.gauge import face_uv
from assets.mesh import Frame, Model
from assets.paint import Canvas, clouds, rgb
from assets.scene import Group, save
from assets.shapes import arc, extrude, lathe, rounded, rounded_box

FLOOR = 1.45
BASE, SHOULDER, ELBOW, WRIST = 0.26, 0.42, 0.80, 0.76  # from each joint's parent to the joint
STANDS = ((0.91, 0.0, 0), (0.45, -0.86, 27))  # x, z, turn about y
STAND_TOP, BLOCK = 0.25, (0.10, 0.15, 0.10)


def up(x=0.0, y=0.0, z=0.0):
    """A frame at a point whose z axis points upwards."""
    return Frame((x, y, z), (1, 0, 0), (0, 0, -1), (0, 1, 0))


def sides(x, y, z):
    """Two frames at depth z and -z whose z axes point away from each other."""
    yield Frame((x, y, z))
    yield Frame((x, y, -z), (-1, 0, 0), (0, 1, 0), (0, 0, -1))


def moved(frame, x, y, z):
    return Frame(frame.place((x, y, z)), frame.x, frame.y, frame.z)


def link(low_radius, high_radius, low, high, steps=18):
    """The outline around two circles at heights `low` and `high` of the y axis."""
    lean = math.degrees(math.asin((low_radius - high_radius) / (high - low)))
    out = []
    for y, r, start, stop in ((low, low_radius, 180 - lean, 360 + lean), (high, high_radius, lean, 180 - lean)):
        for nx, ny in arc(0, 0, 1, start, stop, steps):
            out.append((nx * r, y + ny * r, nx, ny))
    return out + out[:1]


def button(model, material, radius, height, frame, bevel=0.012, segments=48):
    lathe(model, material, rounded([(radius, 0), (radius, height, bevel), (0.0, height)]), segments, frame)


def screws(model, count, ring, radius, frame, start=0.0):
    for k in range(count):
        a = math.radians(start + 360 * k / count)
        place = moved(frame, ring * math.cos(a), ring * math.sin(a), 0)
        button(model, "steel", radius, radius * 0.8, place, radius * 0.3, 12)


def motor(model, radius, height, frame):
    """A joint's cover: a dark drum with a steel lid and its screws."""
    button(model, "dark", radius, height, frame, 0.018)
    lid = moved(frame, 0, 0, height - 0.001)
    button(model, "steel", radius * 0.46, 0.012, lid, 0.006)
    screws(model, 8, radius * 0.70, radius * 0.075, lid)


def floor_texture(size=768):
    """Sealed concrete with the marked reach of the robot; darker where things stand on it."""
    canvas = Canvas(size, size)
    mid, px = size / 2, size / 2 / FLOOR

    def base(x, y):
        v = 0.50 + 0.10 * (clouds(x / 46, y / 46, 4, 3) - 0.5) + 0.03 * (clouds(x / 5, y / 5, 2, 9) - 0.5)
        return v * 0.97, v, v * 1.03

    canvas.each(base)
    yellow = rgb("e8b41c")
    canvas.ring(mid, mid, 1.255 * px, 1.30 * px, yellow, strength=0.9)
    for k in range(72):
        a, major = math.radians(5 * k), k % 6 == 0
        ends = [(mid + r * px * math.cos(a), mid + r * px * math.sin(a)) for r in (1.18 if major else 1.21, 1.245)]
        canvas.line(*ends, 3.2 if major else 1.6, yellow, 0.85 if major else 0.6)
    black, half = (0, 0, 0), 0.36
    canvas.rect(mid - half * px, mid - half * px, mid + half * px, mid + half * px, black, 16, 0.55, 44)
    for x, z, turn in STANDS:
        c, s = math.cos(math.radians(turn)) * 0.18 * px, math.sin(math.radians(turn)) * 0.18 * px
        middle = (mid + x * px, mid + z * px)
        corners = [(c - s, -s - c), (c + s, -s + c), (-c + s, s + c), (-c - s, s - c)]
        canvas.polygon([(middle[0] + a, middle[1] + b) for a, b in corners], black, 0.55, 30)
    return canvas


def cell(model):
    """What does not move: floor, pedestal, stands."""
    rim = [(FLOOR - 0.03, -0.05), (FLOOR, -0.05, 0.01), (FLOOR, 0, 0.008), (FLOOR - 0.01, 0)]
    lathe(model, "dark", rounded(rim), 96, up())
    rings = [(FLOOR - 0.01) * (1 - k / 12) for k in range(12)] + [0.0]
    lathe(model, "floor", [(r, 0, 0, 1) for r in rings], 96, up(), uv=face_uv(FLOOR))
    plate = rounded([(-0.36, -0.36), (0.36, -0.36), (0.36, 0.36), (-0.36, 0.36)], 0.06, closed=True, steps=6)
    extrude(model, "dark", plate, 0, 0.05, up(), 0.012)
    screws(model, 4, 0.42, 0.026, up(0, 0.05), 45)
    column = [(0.31, 0.05), (0.31, 0.09, 0.012), (0.27, 0.10, 0.03), (0.25, 0.22, 0.02)]
    column += [(0.25, 0.245), (0.20, 0.245)]
    lathe(model, "grey", rounded(column), 72, up())
    screws(model, 12, 0.288, 0.011, up(0, 0.09))
    for x, z, turn in STANDS:
        c, s = math.cos(math.radians(turn)), math.sin(math.radians(turn))
        stand = Frame((x, STAND_TOP / 2 - 0.02, z), (c, 0, -s), (0, 1, 0), (s, 0, c))
        rounded_box(model, "grey", (0.32, STAND_TOP - 0.04, 0.32), 0.012, stand)
        rounded_box(model, "dark", (0.38, 0.04, 0.38), 0.012, moved(stand, 0, STAND_TOP / 2, 0))
    x, z, turn = STANDS[1]  # blocks that are done
    c, s = math.cos(math.radians(turn)), math.sin(math.radians(turn))
    for dx, dz in ((-0.09, -0.09), (0.09, -0.09), (-0.09, 0.09)):
        place = (x + c * dx + s * dz, STAND_TOP + BLOCK[1] / 2, z - s * dx + c * dz)
        rounded_box(model, "block", BLOCK, 0.012, Frame(place, (c, 0, -s), (0, 1, 0), (s, 0, c)))


def turret(model):
    button(model, "steel", 0.262, 0.03, up(0, -0.012), 0.006, 72)
    lathe(model, "body", rounded([(0.27, 0.018), (0.27, 0.15, 0.05), (0.0, 0.15)], steps=6), 72, up())
    rounded_box(model, "dark", (0.20, 0.20, 0.17), 0.03, Frame((-0.26, 0.19, 0)))
    rounded_box(model, "dark", (0.16, 0.13, 0.10), 0.02, Frame((-0.37, 0.19, 0)))
    for k in range(5):  # cooling fins around it
        rounded_box(model, "grey", (0.012, 0.18, 0.15), 0.004, Frame((-0.345 - 0.022 * k, 0.19, 0)), 2)
    for side in sides(0, 0, 0.116):
        extrude(model, "body", link(0.19, 0.165, 0.13, SHOULDER), 0, 0.075, side, 0.022, steps=4)
        motor(model, 0.125, 0.075, moved(side, 0, SHOULDER, 0.074))


def upper_arm(model):
    extrude(model, "body", link(0.165, 0.125, 0, ELBOW), -0.108, 0.108, bevel=0.028, steps=4)
    for side in sides(0, 0, 0.106):
        extrude(model, "dark", link(0.074, 0.058, 0.30, 0.55), 0, 0.012, side, 0.005)
        screws(model, 2, 0.125, 0.012, moved(side, 0, 0.425, 0.012), 90)


def forearm(model):
    for side in sides(0, 0, 0.116):
        extrude(model, "grey", link(0.118, 0.10, 0, 0.24), 0, 0.056, side, 0.016, steps=4)
        motor(model, 0.086, 0.05, moved(side, 0, 0, 0.055))
    rounded_box(model, "grey", (0.22, 0.15, 0.33), 0.03, Frame((0, 0.245, 0)), 4)
    tube = [(0.128, 0.30), (0.128, 0.335, 0.01), (0.112, 0.35, 0.02), (0.078, 0.60, 0.02)]
    tube += [(0.078, 0.615), (0.05, 0.615)]
    lathe(model, "body", rounded(tube), 56, up())
    button(model, "dark", 0.086, 0.05, up(0, 0.613), 0.01, 56)
    for side in sides(0, 0, 0.047):
        extrude(model, "dark", link(0.062, 0.052, 0.64, WRIST), 0, 0.028, side, 0.008)
        button(model, "steel", 0.032, 0.008, moved(side, 0, WRIST, 0.027), 0.004, 32)


def hand(model):
    for side in sides(0, 0, 0.0):
        button(model, "grey", 0.050, 0.044, side, 0.004, 40)
    lathe(model, "grey", rounded([(0.038, 0.03), (0.038, 0.086)]), 40, up())
    button(model, "steel", 0.074, 0.016, up(0, 0.084), 0.004)
    screws(model, 8, 0.060, 0.006, up(0, 0.0995), 22.5)
    button(model, "dark", 0.050, 0.03, up(0, 0.098), 0.004)
    rounded_box(model, "body", (0.30, 0.062, 0.125), 0.016, Frame((0, 0.148, 0)), 4)
    rounded_box(model, "steel", (0.28, 0.016, 0.05), 0.004, Frame((0, 0.183, 0)))


def finger(model):
    """The left one: its pad faces +x."""
    rounded_box(model, "dark", (0.052, 0.034, 0.086), 0.008, Frame((-0.008, 0.007, 0)))
    blade = [(-0.03, 0.015), (0.012, 0.015), (0.012, 0.185), (-0.006, 0.185), (-0.03, 0.10)]
    extrude(model, "steel", rounded(blade, 0.006, closed=True), -0.03, 0.03, bevel=0.005)
    rounded_box(model, "rubber", (0.010, 0.09, 0.05), 0.003, Frame((0.013, 0.135, 0)), 2)


def build(library, folder):
    palette = Model("")
    palette.material("body", (0.92, 0.36, 0.05), (0.86, 0.34, 0.05), (0.35, 0.33, 0.30), 48)
    palette.material("dark", (0.11, 0.115, 0.13), (0.12, 0.125, 0.14), (0.40, 0.40, 0.42), 32)
    palette.material("grey", (0.58, 0.60, 0.62), (0.55, 0.57, 0.59), (0.25, 0.25, 0.25), 32)
    palette.material("steel", (0.42, 0.43, 0.45), (0.42, 0.43, 0.45), (0.75, 0.76, 0.78), 36)
    palette.material("rubber", (0.05, 0.05, 0.055), (0.06, 0.06, 0.065), (0.10, 0.10, 0.10), 8)
    palette.material("block", (0.10, 0.32, 0.62), (0.10, 0.33, 0.62), (0.40, 0.42, 0.45), 40)
    palette.material("floor", (1.1, 1.1, 1.1), (0.85, 0.85, 0.85), (0.06, 0.06, 0.06), 20, texture="floor.png")
    materials = palette.materials

    root = Group("robot", (0, -0.7, 0), reach=2.65)
    cell(root.model(materials))
    base = root.group("base", (0, BASE, 0))
    turret(base.model(materials))
    shoulder = base.group("shoulder", (0, SHOULDER, 0), (0, 0, -14))
    upper_arm(shoulder.model(materials))
    elbow = shoulder.group("elbow", (0, ELBOW, 0), (0, 0, -96))
    forearm(elbow.model(materials))
    wrist = elbow.group("wrist", (0, WRIST, 0), (0, 0, -70))
    hand(wrist.model(materials))
    for name, x, turn in (("finger_left", -0.095, 0), ("finger_right", 0.095, 180)):
        finger(wrist.group(name, (x, 0.19, 0), (0, turn, 0)).model(materials))
    x, z, _ = STANDS[0]
    rounded_box(root.group("part", (x, STAND_TOP + BLOCK[1] / 2, z)).model(materials), "block", BLOCK, 0.012)

    floor_texture().save(os.path.join(folder, "floor.png"))
    return save(library, os.path.join(folder, "robot.qel"), root)
