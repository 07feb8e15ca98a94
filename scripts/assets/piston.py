"""A piston with its rings, wrist pin, connecting rod, bearing and bolts.

The bore runs along y, the pin and the crank along z; the pin's middle is the origin of the drawing.
Lengths are in piston radii.
"""

import math
import os

from assets.mesh import Frame, Model
from assets.paint import Canvas, clouds, noise
from assets.shapes import arc, extrude, lathe, rounded, soft

UP = Frame((0, 0, 0), (1, 0, 0), (0, 0, -1), (0, 1, 0))  # turned parts standing on the bore's axis
CRANK = -2.95  # middle of the big end
GROOVES = ((0.40, 0.50), (0.585, 0.645), (0.735, 0.795))
FLAT = 0.70  # the skirt is cut away to this at the pin's ends


def crown_texture():
    """The top face as turned on a lathe, with the mark for the fitting direction and the size."""
    size = 256
    canvas = Canvas(size, size)
    mid = size / 2

    def base(x, y):
        dx, dy = x - mid, y - mid
        r, a = math.hypot(dx, dy), math.atan2(dy, dx)
        fans = math.cos(a - 0.7) ** 2
        v = 0.80 + 0.17 * fans**2 + 0.05 * (noise(r * 0.9, 0.5, 3) - 0.5)
        return v, v, v * 1.01

    canvas.each(base)
    ink = (0.24, 0.25, 0.27)
    canvas.polygon([(mid, mid - 61), (mid - 11, mid - 42), (mid + 11, mid - 42)], ink, 0.9)
    canvas.text("83.00", mid, mid + 46, 17, 2.5, ink, 0.9, spread=0.95)
    return canvas


def skirt_texture():
    """Fine turning marks; a dark graphite pad on each side that slides. u starts on one of them."""
    w, h = 512, 128
    canvas = Canvas(w, h)

    def base(x, y):
        v = 0.92 + 0.07 * (noise(y * 0.9, 2.5, 5) - 0.5) + 0.04 * (clouds(x / 64, y / 64, 3, 9, 8) - 0.5)
        return v, v, v

    canvas.each(base)
    for middle in (0, w / 2, w):
        canvas.rect(middle - 74, 16, middle + 74, 108, (0.27, 0.28, 0.30), 16, soft=2)
    return canvas


def skirt_section():
    """The skirt seen from above: a circle with two flats, counter-clockwise from +x."""
    corner = math.degrees(math.asin(FLAT))
    right = arc(0, 0, 1, -corner + 2, corner - 2, 16)
    left = [(-x, -y) for x, y in right]
    x = math.cos(math.radians(corner)) - 0.03
    flat = [(x, FLAT), (x / 3, FLAT), (-x / 3, FLAT), (-x, FLAT)]
    points = right + flat + left + [(-a, -b) for a, b in flat]
    half = len(right) // 2  # start on the +x axis, so that the texture's seam lies there
    return soft(points[half:] + points[:half], 70)


def skirt(model):
    section = skirt_section()
    wall, top = 0.09, 0.34
    total = len(section) - 1

    def bottom(x):
        t = max(0.0, min(1.0, (abs(x) - 0.60) / 0.34))
        return -0.36 - 0.44 * t * t * (3 - 2 * t)

    levels = [(wall, None, 180), (wall, 0, 180)]
    levels += [(wall / 2 * (1 - math.cos(math.radians(a))), 0, a) for a in (150, 120, 90, 60, 30)]
    levels += [(0, 0, 0), (0, None, 0)]
    rows = []
    for inset, at_bottom, a in levels:
        c, s = math.cos(math.radians(a)), math.sin(math.radians(a))
        row = []
        for i, (x, y, nx, ny) in enumerate(section):
            low = bottom(x)
            h = top if at_bottom is None else low - wall / 2 * s
            u, v = i / total, (h + 0.84) / (top + 0.84)
            row.append((UP.place((x - nx * inset, y - ny * inset, h)), UP.turn((nx * c, ny * c, -s)), (u, v)))
        rows.append(row)
    model.grid("inside", rows[:2])
    model.grid("skirt", rows[1:])


def piston(model):
    outline = [(0.0001, 0.30), (0.985, 0.30, 0.015)]
    for low, high in GROOVES:
        outline += [(0.985 if low < 0.45 else 0.995, low, 0.006), (0.88, low), (0.88, high), (0.995, high, 0.006)]
    body = rounded(outline + [(0.995, 0.95, 0.035), (0.955, 0.95)], steps=2)
    lathe(model, "aluminium", body, 80, UP)
    crown = rounded([(0.956, 0.95), (0.70, 0.95, 0.05), (0.60, 0.885, 0.08), (0.0001, 0.885)])
    lathe(model, "crown", crown, 80, UP, uv=lambda i, s, r, x, y, h: (0.5 + x * 0.5, 0.5 + y * 0.5))
    skirt(model)
    for end in (1, -1):
        side = Frame((0, 0, 0), (end, 0, 0), (0, 1, 0), (0, 0, end))
        boss = [(0.42, 0.62), (0.40, 0.80, 0.03), (0.285, 0.80, 0.015), (0.265, 0.78), (0.265, 0.70)]
        lathe(model, "aluminium", rounded(boss), 48, side)
        pin = [(0.264, 0.755), (0.25, 0.765, 0.01), (0.15, 0.765, 0.02), (0.135, 0.75), (0.135, 0.702)]
        lathe(model, "pin", rounded(pin), 40, side)
        lathe(model, "dark", [(0.14, 0.704, 0, 1), (0.0001, 0.704, 0, 1)], 24, side)


def rings(model):
    for k, (low, high) in enumerate(GROOVES):
        if k == 0:  # the oil ring: two rails and a slotted spacer
            sections = [("ring", low + 0.006, low + 0.032, 1.008), ("dark", low + 0.032, high - 0.032, 0.97)]
            sections.append(("ring", high - 0.032, high - 0.006, 1.008))
        else:
            sections = [("ring", low + 0.006, high - 0.006, 1.008)]
        for material, a, b, outer in sections:
            edge = 0.008 if material == "ring" else 0.0
            section = rounded([(0.89, a), (outer, a, edge), (outer, b, edge), (0.89, b)], steps=2)
            start, sweep = 70 + 120 * k, 357.0
            lathe(model, material, section, 80, UP, start, sweep)
            rim = [(x, y) for x, y, _, _ in section]
            rim = [p for i, p in enumerate(rim) if p != rim[i - 1]]
            for angle, back in ((start, False), (start + sweep, True)):
                t = math.radians(angle)
                points = [UP.place((r * math.cos(t), r * math.sin(t), h)) for r, h in rim]
                n = UP.turn((math.sin(t), -math.cos(t), 0))
                if back:
                    points, n = points[::-1], tuple(-v for v in n)
                model.face(material, points, [n] * len(points))


def beam_half_width(y):
    """Half the width of the rod's beam, which flares into both ends."""
    t = (y + 0.25) / (CRANK + 0.45 + 0.25)
    return 0.235 + 0.10 * t + 0.11 * max(0.0, 1 - t / 0.14) ** 2 + 0.40 * max(0.0, (t - 0.76) / 0.24) ** 2


def rod(model):
    top, low, count = -0.25, CRANK + 0.45, 18
    heights = [top + (low - top) * k / count for k in range(count + 1)]
    right = [(beam_half_width(y), y) for y in reversed(heights)]  # upwards, outside on the right
    upper = [p for p in right if p[1] > CRANK + 0.66]  # the web ends inside the big end's ring
    web = upper + [(-x, y) for x, y in reversed(upper)]
    extrude(model, "forged", soft(web), -0.075, 0.075)
    inner = [(x - nx * 0.09, y - ny * 0.09) for x, y, nx, ny in soft(right, closed=False)]
    flange = right + inner[::-1]
    extrude(model, "forged", soft(flange), -0.19, 0.19, bevel=0.035)
    extrude(model, "forged", soft([(-x, y) for x, y in reversed(flange)]), -0.19, 0.19, bevel=0.035)

    # Small end with its bush.
    ring = [(0.275, -0.25), (0.37, -0.25, 0.04), (0.37, 0.25, 0.04), (0.275, 0.25)]
    lathe(model, "machined", rounded(ring), 64)
    lathe(model, "bronze", rounded([(0.275, 0.262), (0.25, 0.262), (0.25, -0.262), (0.275, -0.262)]), 48)
    lathe(model, "pin", rounded([(0.248, -0.66), (0.248, 0.66)]), 48)

    # Big end: the rod's half, the cap, the bearing shells between them.
    gap, inner = 0.012, 0.60
    bore = arc(0, 0, inner, 178.8, 1.2, 22)
    shoulder = [(1.12, gap), (1.12, 0.36), (1.05, 0.44), (0.86, 0.46)]
    outer = arc(0, 0, 0.83, 40, 140, 14)
    half = bore + shoulder + outer + [(-x, y) for x, y in reversed(shoulder)]
    lower = [(-x, -y) for x, y in bore]
    lower += [(-x, -y) for x, y in shoulder[:3]] + [(-0.90, -0.44)]
    lower += [(-x, -y) for x, y in arc(0, 0, 0.84, 34, 146, 16)]
    lower += [(0.90, -0.44)] + [(x, -y) for x, y in reversed(shoulder[:3])]
    big = Frame((0, CRANK, 0))
    for outline in (half, lower):
        extrude(model, "machined", soft(outline), -0.27, 0.27, big, bevel=0.035, side_material="forged")
    shell = [(inner, 0.25), (inner, 0.275), (0.545, 0.275, 0.015), (0.545, -0.275, 0.015)]
    lathe(model, "bronze", rounded(shell + [(inner, -0.275), (inner, -0.25)]), 72, big)


def bolts(model):
    for x in (0.93, -0.93):
        down = Frame((x, CRANK, 0), (1, 0, 0), (0, 0, 1), (0, -1, 0))
        up = Frame((x, CRANK, 0), (1, 0, 0), (0, 0, -1), (0, 1, 0))
        lathe(model, "bolt", rounded([(0.0001, 0.42), (0.20, 0.42), (0.20, 0.475, 0.012), (0.0001, 0.475)]), 36, down)
        hexagon = rounded(arc(0, 0, 0.165, 15, 315, 5), 0.02, closed=True, steps=2)
        extrude(model, "bolt", hexagon, 0.45, 0.62, down, bevel=0.02)
        lathe(model, "bolt", rounded([(0.0001, 0.44), (0.19, 0.44), (0.19, 0.48, 0.012), (0.0001, 0.48)]), 36, up)
        nut = rounded(arc(0, 0, 0.165, 0, 300, 5), 0.02, closed=True, steps=2)
        extrude(model, "bolt", nut, 0.46, 0.62, up, bevel=0.02)
        thread = [(0.085, 0.60)]
        for k in range(5):
            thread += [(0.085, 0.63 + 0.028 * k), (0.072, 0.644 + 0.028 * k)]
        lathe(model, "bolt", rounded(thread + [(0.085, 0.775), (0.06, 0.80, 0.01), (0.0001, 0.80)]), 28, up)


def build(folder):
    m = Model("piston")
    m.material("aluminium", (0.68, 0.70, 0.73), (0.56, 0.58, 0.61), (0.50, 0.50, 0.50), 28)
    m.material("crown", (0.74, 0.76, 0.79), (0.58, 0.60, 0.63), (0.45, 0.45, 0.45), 22, texture="crown.png")
    m.material("skirt", (0.72, 0.74, 0.77), (0.60, 0.62, 0.65), (0.42, 0.42, 0.42), 24, texture="skirt.png")
    m.material("inside", (0.36, 0.37, 0.39), (0.34, 0.35, 0.37), (0.1, 0.1, 0.1), 10)
    m.material("dark", (0.04, 0.04, 0.05), (0.05, 0.05, 0.06), (0.1, 0.1, 0.1), 10)
    m.material("ring", (0.30, 0.31, 0.34), (0.32, 0.33, 0.36), (0.75, 0.75, 0.78), 40)
    m.material("pin", (0.62, 0.65, 0.70), (0.45, 0.47, 0.50), (0.90, 0.90, 0.90), 60)
    m.material("forged", (0.34, 0.36, 0.40), (0.33, 0.35, 0.39), (0.38, 0.39, 0.42), 18)
    m.material("machined", (0.54, 0.56, 0.60), (0.48, 0.50, 0.54), (0.60, 0.60, 0.62), 36)
    m.material("bronze", (0.66, 0.47, 0.22), (0.62, 0.43, 0.19), (0.65, 0.55, 0.40), 34)
    m.material("bolt", (0.16, 0.17, 0.19), (0.18, 0.19, 0.21), (0.70, 0.70, 0.72), 40)
    m.object("piston")
    piston(m)
    m.object("rings")
    rings(m)
    m.object("rod")
    rod(m)
    m.object("bolts")
    bolts(m)
    radius = m.recentre()
    m.save(folder)
    crown_texture().save(os.path.join(folder, "crown.png"))
    skirt_texture().save(os.path.join(folder, "skirt.png"))
    return m, radius
