"""A speedometer: printed dial, chromed bezel, needle, housing and a domed glass.

It faces +z; the dial is 2 units wide less the bezel. Depths along z: the dial lies at 0.
"""

import math
import os

from assets.mesh import Frame, Model, cross, sub, unit
from assets.metal import chrome_strip
from assets.paint import Canvas, noise, rgb
from assets.shapes import arc, dome, lathe, rounded, rounded_box

FULL_SCALE = 240
VALUE = 92  # what the needle shows
DIAL_RADIUS = 0.86
SIZE = 1024
INK, RED, AMBER = rgb("f4f6f8"), rgb("e5322d"), rgb("ff7a1a")


def angle(value):
    """Degrees counter-clockwise from +x: 0 stands lower left, full scale lower right."""
    return 225 - 270 * value / FULL_SCALE


def needle_outline(grow=0.0):
    """The needle seen from the front, its tip along +x, counter-clockwise."""
    return [
        (-0.10 - grow, -0.030 - grow),
        (0.0, -0.034 - grow),
        (0.70 + grow, -0.008 - grow),
        (0.70 + grow, 0.008 + grow),
        (0.0, 0.034 + grow),
        (-0.10 - grow, 0.030 + grow),
    ]


def turned(points, degrees):
    c, s = math.cos(math.radians(degrees)), math.sin(math.radians(degrees))
    return [(x * c - y * s, x * s + y * c) for x, y in points]


def dial_texture(value=VALUE):
    """The dial with the light of a needle at `value`, or as it is behind a needle that moves: None."""
    canvas = Canvas(SIZE, SIZE)
    mid = SIZE / 2
    unit_px = mid / DIAL_RADIUS

    def spot(degrees, radius):
        a = math.radians(degrees)
        return mid + radius * unit_px * math.cos(a), mid - radius * unit_px * math.sin(a)

    def base(x, y):
        dx, dy = x - mid, y - mid
        r = math.hypot(dx, dy) / unit_px
        a = math.atan2(-dy, dx)
        if r > 0.36:  # brushed towards the middle: the light gathers in two fans
            grain = noise(a / math.pi * 260, 3.5, 7, 520) - 0.5
            fans = math.cos(a - math.radians(118)) ** 2
            v = 0.10 + 0.17 * fans**3 + 0.014 * grain
        else:  # matt, lighter at the top
            v = 0.085 + 0.05 * (0.5 - dy / unit_px / 0.72)
        v *= 1 - 0.55 * max(0.0, (r - 0.74) / 0.12) ** 2  # the bezel keeps light away
        return v * 0.93, v, v * 1.12

    canvas.each(base)
    # The scale: a thin track, the red zone, ticks.
    canvas.ring(mid, mid, 0.800 * unit_px, 0.806 * unit_px, INK, -angle(0), -angle(200), 0.55)
    canvas.ring(mid, mid, 0.775 * unit_px, 0.806 * unit_px, RED, -angle(200), -angle(240))
    for mark in range(0, FULL_SCALE + 1, 5):
        a, hot = angle(mark), mark >= 200
        inner, width = (0.70, 8.0) if mark % 20 == 0 else (0.735, 4.6) if mark % 10 == 0 else (0.762, 2.8)
        ink = RED if hot and mark % 20 else INK
        canvas.line(spot(a, inner), spot(a, 0.80), width, ink, 1.0 if mark % 10 == 0 else 0.85)
    for mark in range(0, FULL_SCALE + 1, 20):
        x, y = spot(angle(mark), 0.575)
        canvas.text(str(mark), x, y, 50, 6.6, RED if mark >= 200 else INK, spread=0.92)
    # Unit and the trip display.
    canvas.text("km/h", mid, mid + 0.245 * unit_px, 36, 4.4, INK, 0.9)
    left, top, right, bottom = mid - 132, mid + 0.40 * unit_px, mid + 132, mid + 0.535 * unit_px
    canvas.rect(left - 5, top - 5, right + 5, bottom + 5, rgb("3a4048"), 16)
    canvas.rect(left, top, right, bottom, lambda x, y: (0.02, 0.05 + 0.05 * (y - top) / 80, 0.075), 12)
    canvas.text("128406", mid - 36, (top + bottom) / 2, 38, 4.2, rgb("8fe6ff"))
    canvas.text("km", mid + 96, (top + bottom) / 2 + 3, 32, 3.4, rgb("8fe6ff"), 0.8)
    # Shadows of the needle, the hub ring and the bezel; the light stands high on the left.
    if value is not None:
        shadow = turned(needle_outline(0.004), angle(value))
        canvas.polygon([(mid + x * unit_px + 12, mid - y * unit_px + 20) for x, y in shadow], (0, 0, 0), 0.55, 16)
    canvas.disc(mid + 10, mid + 18, 0.19 * unit_px, (0, 0, 0), 0.6, 30)
    edge = 0.845 * unit_px
    canvas.fill(lambda x, y: edge - math.hypot(x - mid - 14, y - mid - 30), (0, 0, SIZE, SIZE), (0, 0, 0), 0.6, 44)
    if value is not None:  # the part travelled glows
        canvas.ring(mid, mid, 0.813 * unit_px, 0.828 * unit_px, AMBER, -angle(0), -angle(value))
        canvas.ring(mid, mid, 0.790 * unit_px, 0.850 * unit_px, AMBER, -angle(0), -angle(value), 0.22, 26)
    return canvas


def glass_texture():
    """White streaks of light whose strength is in the alpha; the rest is nearly clear."""
    size = 256
    canvas = Canvas(size, size, (1, 1, 1), 0.0)
    for i in range(size * size):
        x, y = ((i % size) + 0.5) / size * 2 - 1, 1 - ((i // size) + 0.5) / size * 2
        r = math.hypot(x, y)
        a = 0.10 + 0.30 * max(0.0, r - 0.72) ** 1.5
        # A window's reflection: above a soft curve across the upper half, fading downwards.
        lower = 0.20 + 0.30 * x * x + 0.22 * x
        inside = min(1.0, max(0.0, (y - lower) / 0.02)) * min(1.0, max(0.0, (0.90 - r) / 0.02))
        a += inside * 0.55 * (0.40 + 0.60 * min(1.0, max(0.0, (y - lower) / 0.7)))
        canvas.alpha[i] = min(1.0, a)
    return canvas


def face_uv(radius):
    return lambda i, s, r, x, y, h: (0.5 + x / (2 * radius), 0.5 + y / (2 * radius))


def needle(model, degrees):
    """A bar with a ridge: two sloping sides, blunt ends."""
    low, high = 0.050, 0.086
    c, s = math.cos(math.radians(degrees)), math.sin(math.radians(degrees))
    frame = Frame((0, 0, 0), (c, s, 0), (-s, c, 0), (0, 0, 1))
    tail_low, wide_low, tip_low, tip_high, wide_high, tail_high = needle_outline()
    ridge = [(-0.09, 0, high - 0.006), (0.0, 0, high), (0.692, 0, low + 0.014)]

    def quad(points, material="needle"):
        n = unit(cross(sub(points[1], points[0]), sub(points[2], points[0])))
        model.face(material, [frame.place(p) for p in points], [frame.turn(n)] * len(points))

    def deck(p, z=low):
        return (p[0], p[1], z)

    def under(p):
        return (p[0], p[1], low - 0.014)

    for a, b, ra, rb in ((tail_low, wide_low, 0, 1), (wide_low, tip_low, 1, 2)):
        quad([deck(a), deck(b), ridge[rb], ridge[ra]])
    for a, b, ra, rb in ((tip_high, wide_high, 2, 1), (wide_high, tail_high, 1, 0)):
        quad([deck(a), deck(b), ridge[rb], ridge[ra]])
    quad([deck(tip_low), deck(tip_high), ridge[2]])
    quad([deck(tail_high), deck(tail_low), ridge[0]])
    rim = needle_outline()
    for a, b in zip(rim, rim[1:] + rim[:1]):
        quad([under(a), under(b), deck(b), deck(a)])
    quad([under(p) for p in reversed(rim)])


def bezel_outline():
    return rounded(
        [(0.91, -0.14), (0.97, -0.10, 0.03), (1.0, 0.02, 0.06)]
        + [(0.985, 0.115, 0.05), (0.905, 0.12, 0.05), (0.875, 0.05)],
        steps=6,
    )


def materials(model, dial="dial.png"):
    model.material("housing", (0.10, 0.10, 0.11), (0.13, 0.13, 0.14), (0.35, 0.35, 0.35), 24)
    model.material("bezel", (1, 1, 1), (0.62, 0.62, 0.62), (0.65, 0.65, 0.65), 60, texture="bezel.png")
    model.material("reveal", (0.05, 0.05, 0.06), (0.07, 0.07, 0.08), (0.25, 0.25, 0.25), 30)
    model.material("dial", (1.1, 1.1, 1.1), (0.85, 0.85, 0.85), (0.05, 0.05, 0.05), 12, texture=dial)
    model.material("trim", (0.45, 0.46, 0.48), (0.45, 0.46, 0.48), (0.8, 0.8, 0.8), 30)
    model.material("needle", (0.80, 0.16, 0.04), (0.95, 0.20, 0.05), (0.45, 0.40, 0.35), 30)
    model.material("hub", (0.06, 0.06, 0.07), (0.10, 0.10, 0.11), (0.75, 0.75, 0.75), 50)
    model.material("glass", (1, 1, 1), (0.55, 0.57, 0.6), (0.9, 0.9, 0.9), 180, d=0.45, texture="glass.png")


def case(m):
    """Everything behind the needle."""
    m.object("housing")
    shell = rounded([(0, -0.60), (0.60, -0.60, 0.05), (0.70, -0.50, 0.08), (0.88, -0.22, 0.05), (0.93, -0.10)])
    lathe(m, "housing", shell, 72)
    for k in range(3):  # rear mounting studs and the connector
        a = math.radians(90 + 120 * k)
        stud = Frame((0.42 * math.cos(a), 0.42 * math.sin(a), -0.60), (1, 0, 0), (0, -1, 0), (0, 0, -1))
        lathe(m, "trim", rounded([(0.055, -0.02), (0.055, 0.09, 0.015), (0, 0.09)]), 24, stud)
    rounded_box(m, "housing", (0.34, 0.20, 0.16), 0.025, Frame((0, -0.12, -0.65)))

    m.object("bezel")
    lathe(m, "bezel", bezel_outline(), 120, uv=lambda i, s, r, x, y, h: (i, s))
    m.object("dial")
    lathe(m, "reveal", rounded([(0.878, 0.055), (0.855, -0.002)]), 96)
    lathe(m, "dial", [(0.86, 0, 0, 1), (0.0001, 0, 0, 1)], 96, uv=face_uv(DIAL_RADIUS))
    lathe(m, "trim", rounded([(0.367, -0.01), (0.367, 0.014, 0.006), (0.349, 0.014, 0.006), (0.349, -0.01)]), 96)


def hub(m):
    lathe(m, "trim", rounded([(0.15, 0.0), (0.15, 0.065, 0.02), (0.128, 0.078, 0.01), (0.115, 0.075)]), 64)
    cap, lean = [(0.122, 0.07, 1, 0)], math.cos(math.radians(35))
    for x, y in arc(0, 0, 0.122, 0, 89.9, 10, 0.05):
        cap.append((x, 0.075 + y, x / 0.122 * lean, math.sqrt(1 - (x / 0.122 * lean) ** 2)))
    lathe(m, "hub", cap, 64)


def glass(m):
    rim = 0.885
    lathe(m, "glass", dome(rim, 0.10, 12, 0.085), 96, uv=face_uv(rim))


def build(folder):
    m = Model("gauge")
    materials(m)
    case(m)
    m.object("needle")
    needle(m, angle(VALUE))
    hub(m)
    m.object("glass")
    glass(m)

    radius = m.recentre()
    m.save(folder)
    dial_texture().save(os.path.join(folder, "dial.png"))
    glass_texture().save(os.path.join(folder, "glass.png"))
    chrome_strip(bezel_outline()).save(os.path.join(folder, "bezel.png"))
    return m, radius
