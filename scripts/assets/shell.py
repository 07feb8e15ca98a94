"""A nautilus: an ellipse swept along a spiral that grows threefold every turn.

The file holds no normals. Every point is written once and shared, so that normals computed from
the faces are smooth all over, across the seam of the texture too.
"""

import math
import os

from assets.mesh import Model
from assets.paint import Canvas, clouds, noise, rgb

TURNS, GROWTH = 2.25, math.log(3.0) / (2 * math.pi)
PICTURE = 1.6 * 2 * math.pi  # the texture covers this much of the spiral, then repeats out of sight
ROWS, AROUND = 126, 44
MOUTH = math.radians(-28)  # where the spiral ends, counter-clockwise from +x


def point(back, phi, size=1.0):
    """A point of the sweep, `back` radians before the mouth; phi runs round the tube from its inner side."""
    grown = math.exp(-GROWTH * back)
    c, s = math.cos(phi), math.sin(phi)
    # Nearer to a box than an ellipse: flatter sides and keel.
    c = math.copysign(abs(c) ** 0.9, c)
    s = math.copysign(abs(s) ** 0.9, s)
    r = grown * (0.50 - (0.57 if c < 0 else 0.485) * size * c)  # never across the axis
    z = grown * 0.43 * size * s * (1.0 - 0.10 * c)
    angle = MOUTH - back
    return r * math.cos(angle), r * math.sin(angle), z


def lip(phi):
    """How far the mouth's edge bends forwards: two waves on the flanks, a notch at the keel."""
    return 0.16 * math.sin(phi) ** 2 - 0.10 * (0.5 - 0.5 * math.cos(phi)) ** 6


def texture():
    """Ivory with growth lines, and rust-red flames that fade out towards the mouth."""
    w, h = 512, 1024
    canvas = Canvas(w, h)
    ivory, cream, rust, deep = rgb("f6ecd9"), rgb("e8d3ae"), rgb("a9441c"), rgb("6d220e")

    def shade(x, y):
        u, back = x / w, y / h * PICTURE
        keel = 0.5 - 0.5 * math.cos(2 * math.pi * u)  # 0 at the inner side, 1 at the keel
        flank = abs(u - 0.5) * 2
        lines = noise(back * 26 + 1.3 * keel, keel * 3, 3)
        c = [a + (b - a) * (0.35 * lines + 0.45 * (1 - keel) ** 2) for a, b in zip(ivory, cream)]
        warp = 1.6 * (clouds(u * 6, back * 1.1, 3, 11, 6) - 0.5) + 0.9 * flank**1.5
        wave = math.sin(back * 9.5 + warp * 3.2)
        age = min(1.0, max(0.0, (back - 0.5) / 1.6))  # nothing near the mouth
        width = -1.2 + 1.65 * age * (0.35 + 0.65 * keel) + 0.35 * (clouds(u * 9, back * 3, 2, 5, 9) - 0.5)
        ink = min(1.0, max(0.0, (wave + width) / 0.30))
        stain = [a + (b - a) * min(1.0, max(0.0, wave + width - 0.15)) for a, b in zip(rust, deep)]
        return tuple(a + (b - a) * ink * 0.95 for a, b in zip(c, stain))

    canvas.each(shade)
    return canvas


def build(folder):
    m = Model("shell", smooth=False)
    m.material("shell", (0.92, 0.93, 0.97), (0.70, 0.69, 0.67), (0.30, 0.30, 0.30), 50, texture="shell.png")
    m.material("pearl", (0.80, 0.72, 0.70), (0.56, 0.50, 0.48), (0.20, 0.24, 0.26), 14)

    def ring(back, size, lean):
        return [
            point(back - lip(2 * math.pi * (k % AROUND) / AROUND) * lean, 2 * math.pi * (k % AROUND) / AROUND, size)
            for k in range(AROUND + 1)
        ]

    m.object("outside")
    rows = []
    for i in range(ROWS + 1):
        back = TURNS * 2 * math.pi * (1 - i / ROWS)
        lean = max(0.0, 1 - back / 1.2) ** 2
        row = ring(back, 1.0, lean)
        rows.append([(p, None, (k / AROUND, 1 - back / PICTURE)) for k, p in enumerate(row)])
    m.grid("shell", rows)

    m.object("inside")
    edge = [p for p, _, _ in rows[-1]]
    inner = [edge, ring(-0.012, 0.975, 1.0), ring(0.0, 0.945, 1.0), ring(0.03, 0.935, 1.0)]
    for i in range(1, 15):
        back = 0.03 + 1.9 * i / 14
        inner.append(ring(back, 0.935, max(0.0, 1 - back / 1.2) ** 2))
    for size in (0.86, 0.70, 0.48, 0.24):  # the wall of the last chamber, bulging away from the mouth
        inner.append(ring(1.93 + 0.30 * (1 - size * size), size, 0.0))
    centre = point(1.93 + 0.30, math.pi / 2, 0.0)
    inner.append([centre] * (AROUND + 1))
    m.grid("pearl", [[(p, None, None) for p in row] for row in inner])

    radius = m.recentre()
    m.save(folder)
    texture().save(os.path.join(folder, "shell.png"))
    return m, radius
