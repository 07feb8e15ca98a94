"""A small racing saloon: one painted body, seen from every side through one texture, and its fittings.

It faces +z; y is up and 0 is the road. The body's texture is an atlas of five views (see VIEWS).
"""

import math
import os

from assets.mesh import Frame, Model, add, cross, length, sub, unit
from assets.paint import Canvas, rgb
from assets.shapes import dome, lathe, rounded, rounded_box

LENGTH, WIDTH, BELT, ROOF = 1.80, 0.84, 0.80, 1.36  # half the length and width, two heights
AXLES, WHEEL = (1.14, -1.12), 0.335
SIZE = 1024
PAINT, STRIPE, GLASS = rgb("1763c6"), rgb("f5f3ec"), rgb("10161d")
# Atlas rows in pixels from the top: where each view lies and what it shows.
VIEWS = {
    "left": (0, 0, 1024, 320),
    "right": (0, 320, 1024, 640),
    "front": (0, 640, 400, 960),
    "rear": (412, 640, 812, 960),
    "top": (824, 640, 1024, 1024),
}
REACH, TALL = 1.92, 1.20  # half the length and the height that the side views show
TOP_SCALE = 200 / 2.0  # pixels for one unit of width in the view from above


def spot(view, x, y, z):
    """Where a point of the car lies in a view, in pixels."""
    x0, y0, x1, y1 = VIEWS[view]
    high = y1 - (y - 0.18) / TALL * (y1 - y0)
    if view == "left":
        return x0 + (0.5 + z / (2 * REACH)) * (x1 - x0), high
    if view == "right":
        return x0 + (0.5 - z / (2 * REACH)) * (x1 - x0), high
    if view == "top":
        return x0 + (x + 1) * TOP_SCALE, y0 + (1 - z / REACH) * 192
    return x0 + (0.5 + (x if view == "front" else -x) / 2.0) * (x1 - x0), high


def view_of(normal):
    """The view that shows a face best. A car's left side is the one at +x."""
    x, y, z = normal
    if y > 0.80:
        return "top"
    if y < -0.5:
        return "left"  # its lowest rows are dark all along
    if abs(z) > 0.72 * math.hypot(x, z):
        return "front" if z > 0 else "rear"
    return "left" if x < 0 else "right"


def paint_side(canvas, view):
    def at(z, y):
        return spot(view, 0, y, z)

    def path(points, width, colour, strength=1.0):
        for a, b in zip(points, points[1:]):
            canvas.line(at(*a), at(*b), width, colour, strength)

    px = SIZE / (2 * REACH)
    x0, y0, x1, y1 = VIEWS[view]
    sill = at(0, 0.33)[1]
    canvas.rect(x0, sill, x1, y1, rgb("15181c"))
    canvas.rect(x0, sill - 6, x1, sill, rgb("c3c8ce"))
    for z in AXLES:
        x, y = at(z, WHEEL)
        canvas.fill(
            lambda a, b: math.hypot(a - x, b - y) - (WHEEL + 0.08) * px,
            (x - 130, y0, x + 130, y1),
            rgb("07080a"),
        )

    def glass(x, y):
        return tuple(c + 0.26 * max(0.0, 1 - abs((x + y * 1.4) % 420 - 190) / 46) for c in GLASS)

    front = [(0.62, 0.845), (0.33, 1.265), (-0.30, 1.285), (-0.30, 0.845)]
    rear = [(-0.40, 0.845), (-0.40, 1.285), (-1.06, 1.255), (-1.27, 0.845)]
    for window in (front, rear):
        points = [at(*p) for p in window]
        for a, b in zip(points, points[1:] + points[:1]):
            canvas.line(a, b, 8, rgb("ccd2d8"))
        canvas.polygon(points, glass, soft=1.5)
    seam = rgb("0a2f66")
    path([(0.56, 0.80), (0.62, 0.66), (0.62, 0.40), (-0.34, 0.40), (-0.34, 0.80)], 2.6, seam, 0.9)
    path([(-LENGTH, 0.775), (LENGTH, 0.745)], 2.2, rgb("d9dde2"), 0.9)
    canvas.rect(*sorted_box(at(-0.23, 0.71), at(-0.09, 0.68)), rgb("d9dde2"), 3)
    x, y = at(0.14, 0.575)
    canvas.disc(x, y, 0.185 * px, STRIPE)
    canvas.ring(x, y, 0.160 * px, 0.170 * px, rgb("14181d"))
    canvas.text("28", x, y, 0.17 * px, 7.5, rgb("14181d"))
    canvas.rect(*sorted_box(at(1.52, 0.60), at(1.60, 0.565)), rgb("ff8a1e"), 3)


def sorted_box(a, b):
    return min(a[0], b[0]), min(a[1], b[1]), max(a[0], b[0]), max(a[1], b[1])


def paint_ends(canvas):
    for view in ("front", "rear"):
        def at(x, y, view=view):
            return spot(view, x, y, 0)

        x0, y0, x1, y1 = VIEWS[view]
        canvas.rect(x0, at(0, 0.33)[1], x1, y1, rgb("15181c"))
        for x in (-0.20, 0.20):
            canvas.rect(*sorted_box(at(x - 0.11, ROOF), at(x + 0.11, 0.33)), STRIPE)
        low, high = (0.86, 1.255) if view == "front" else (0.90, 1.24)
        screen = [at(-0.69, low), at(0.69, low), at(0.585, high), at(-0.585, high)]
        for a, b in zip(screen, screen[1:] + screen[:1]):
            canvas.line(a, b, 8, rgb("ccd2d8"))
        canvas.polygon(
            screen,
            lambda x, y: tuple(c + 0.30 * max(0.0, 1 - abs((x + y * 1.3) % 330 - 150) / 40) for c in GLASS),
            soft=1.5,
        )
    # Grille of the front, with its chromed frame.
    box = sorted_box(spot("front", -0.36, 0.65, 0), spot("front", 0.36, 0.44, 0))
    canvas.rect(*box, rgb("d5d9de"), 22)
    canvas.rect(box[0] + 5, box[1] + 5, box[2] - 5, box[3] - 5, rgb("0c0e11"), 18)
    for k in range(1, 6):
        y = box[1] + (box[3] - box[1]) * k / 6
        canvas.line((box[0] + 16, y), (box[2] - 16, y), 3, rgb("aab1b9"))
    for x in (-0.30, 0.30):
        canvas.line(spot("front", x, 0.868, 0), spot("front", x - 0.27, 0.94, 0), 3, rgb("050608"))
    # Number plate and boot lid of the rear.
    lid = [spot("rear", x, y, 0) for x, y in ((-0.5, 0.80), (-0.5, 0.42), (0.5, 0.42), (0.5, 0.80))]
    for a, b in zip(lid, lid[1:]):
        canvas.line(a, b, 2.6, rgb("0a2f66"), 0.9)
    box = sorted_box(spot("rear", -0.27, 0.63, 0), spot("rear", 0.27, 0.50, 0))
    canvas.rect(*box, rgb("15181c"), 6)
    canvas.rect(box[0] + 2, box[1] + 2, box[2] - 2, box[3] - 2, STRIPE, 5)
    canvas.text("M3D 28", (box[0] + box[2]) / 2, (box[1] + box[3]) / 2, 20, 3, rgb("15181c"), spread=0.9)


def body_texture():
    canvas = Canvas(SIZE, SIZE, PAINT)
    for view in ("left", "right"):
        paint_side(canvas, view)
    paint_ends(canvas)
    x0, y0, x1, y1 = VIEWS["top"]
    for x in (-0.20, 0.20):
        a, b = x0 + (x - 0.11 + 1) * TOP_SCALE, x0 + (x + 0.11 + 1) * TOP_SCALE
        canvas.rect(a, y0, b, y1, STRIPE)
    lid = ((-0.62, 0.80), (-0.66, 1.55), (0.66, 1.55), (0.62, 0.80), (-0.62, 0.80))
    seam = [spot("top", x, 0, z) for x, z in lid]
    for a, b in zip(seam, seam[1:]):
        canvas.line(a, b, 2, rgb("0a2f66"), 0.8)
    return canvas


def wheel_texture():
    size = 256
    canvas = Canvas(size, size, rgb("0c0d0f"))
    mid = size / 2

    def spot_at(k, r):
        a = math.radians(k)
        return mid + r * mid * math.cos(a), mid + r * mid * math.sin(a)

    canvas.disc(mid, mid, 0.97 * mid, rgb("17191c"))
    bright = rgb("e6e9ec")
    for k in range(8):
        a = 45 * k
        for foot, tip, colour in ((32, 7, rgb("9aa1a9")), (22, 4, bright)):
            spoke = [(a - foot, 0.2), (a - tip, 0.88), (a + tip, 0.88), (a + foot, 0.2)]
            canvas.polygon([spot_at(*p) for p in spoke], colour, soft=2)
    canvas.ring(mid, mid, 0.84 * mid, 1.1 * mid, bright)
    canvas.disc(mid, mid, 0.30 * mid, bright)
    for k in range(4):
        canvas.disc(*spot_at(90 * k + 45, 0.2), 7, rgb("3b4046"))
    return canvas


def stack(model, material, rows):
    """A closed skin over rings of points, with smooth normals; each face takes its best view."""
    count = len(rows[0])
    normals = [[(0.0, 0.0, 0.0)] * count for _ in rows]
    faces = []
    for j in range(len(rows) - 1):
        for i in range(count):
            k = (i + 1) % count
            keys = [(j, i), (j, k), (j + 1, k), (j + 1, i)]
            p = [rows[a][b] for a, b in keys]
            n = cross(sub(p[2], p[0]), sub(p[3], p[1]))
            if length(n) < 1e-9:
                continue
            for a, b in keys:
                normals[a][b] = add(normals[a][b], n)
            faces.append((keys, unit(n)))
    by_place = {}
    for j, row in enumerate(rows):  # points that fell together at the ridge share their normal
        for i, p in enumerate(row):
            key = tuple(round(v, 5) for v in p)
            by_place[key] = add(by_place.get(key, (0, 0, 0)), normals[j][i])
    for keys, n in faces:
        view = view_of(n)
        corners = []
        for j, i in keys:
            p = rows[j][i]
            u, v = spot(view, *p)
            corners.append((p, unit(by_place[tuple(round(v, 5) for v in p)]), (u / SIZE, 1 - v / SIZE)))
        model.patch(material, corners)


def ring(half_width, front, rear, height, count=72, power=5.0):
    """A rounded rectangle about the y axis, counter-clockwise seen from above."""
    out, middle, half = [], (front - rear) / 2, (front + rear) / 2
    for i in range(count):
        a = 2 * math.pi * (i + 0.5) / count
        c, s = math.cos(a), math.sin(a)
        r = (abs(c) ** power + abs(s) ** power) ** (-1 / power)
        x, z = half_width * c * r, middle - half * s * r
        out.append((x, height(x, z), z))
    return out


def deck(z):
    """The height of the bonnet, the waist and the boot."""
    t = max(0.0, (z - 0.55) / (LENGTH - 0.55))
    back = max(0.0, (-z - 1.35) / (LENGTH - 1.35))
    return BELT - 0.10 * t**1.6 - 0.05 * back**2


def hull(model):
    low, rows = 0.20, []

    def level(inset, share, crown=0.0, bulge=0.0):
        w, f, r = WIDTH - inset + bulge, LENGTH - inset + bulge * 1.5, LENGTH - inset + bulge

        def height(x, z):
            return low + share * (deck(z) - low) + crown * (1 - (x / WIDTH) ** 2)

        rows.append(ring(max(w, 0.0001), f, r, height))

    for inset in (0.84, 0.5, 0.13):
        level(inset, 0)
    for a in (30, 60, 90):
        c, s = math.cos(math.radians(a)), math.sin(math.radians(a))
        level(0.02 + 0.08 * (1 - s), 0.14 * (1 - c))
    for share, bulge in ((0.30, -0.012), (0.46, 0.0), (0.60, 0.0), (0.72, -0.012)):
        level(0.0, share, bulge=bulge)
    for a in (0, 18, 36, 54, 72, 90):
        c, s = math.cos(math.radians(a)), math.sin(math.radians(a))
        level(0.022 + 0.13 * (1 - c), 0.80 + 0.20 * s, 0.03 * s)
    for inset in (0.25, 0.42, 0.60, 0.75, 0.8399):
        level(inset, 1.0, 0.03)
    stack(model, "paint", rows)


def cabin(model):
    rows = []

    def level(t, inset, lift=0.0):
        lean = t + 0.15 * t * (1 - t)
        w = 0.765 - 0.125 * t - inset
        front, rear = 0.80 - 0.52 * lean - inset, 1.46 - 0.26 * t * t - inset
        y = BELT - 0.06 + (ROOF - BELT + 0.06) * t
        rows.append(ring(max(w, 0.0001), front, rear, lambda x, z: y + lift * (1 - (x / 0.65) ** 2), power=4.5))

    for t in (0.0, 0.15, 0.30, 0.45, 0.60, 0.74, 0.85):
        level(t, 0.0)
    for a in (20, 40, 60, 75, 90):
        c, s = math.cos(math.radians(a)), math.sin(math.radians(a))
        level(0.85 + 0.15 * s, 0.10 * (1 - c), 0.02 * s)
    for inset in (0.18, 0.30, 0.42, 0.52, 0.6399):
        level(1.0, inset, 0.02)
    stack(model, "paint", rows)


def wheels(model):
    for z in AXLES:
        for side in (1, -1):
            out = Frame((side * 0.60, WHEEL, z), (0, 0, -side), (0, 1, 0), (side, 0, 0))
            tread = [(WHEEL, 0.04, 0.04), (WHEEL, 0.23, 0.04)]
            walls = [(0.20, -0.02), (0.30, 0.0, 0.03)], [(0.285, 0.275, 0.03), (0.225, 0.262)]
            tyre = rounded(walls[0] + tread + walls[1], steps=3)
            lathe(model, "tyre", tyre, 40, out)
            rim = [(0.232, 0.255), (0.225, 0.272, 0.008), (0.21, 0.268, 0.008)]
            rim = rounded(rim + [(0.19, 0.235, 0.02), (0.07, 0.262, 0.02), (0.0001, 0.262)], steps=2)
            lathe(model, "wheel", rim, 40, out, uv=lambda i, s, r, x, y, h: (0.5 + x / 0.47, 0.5 + y / 0.47))
            lathe(model, "chrome", rounded([(0.045, 0.26), (0.045, 0.275, 0.012), (0.0001, 0.278)]), 20, out)
            arch = [(0.385, -0.03), (0.435, -0.03), (0.432, 0.018, 0.016), (0.392, 0.026, 0.012)]
            arch = rounded(arch + [(0.385, -0.03)], steps=2)
            over = Frame((side * (WIDTH - 0.012), WHEEL, z), (0, 0, -side), (0, 1, 0), (side, 0, 0))
            lathe(model, "trim", arch, 40, over, -2.0, 184.0)


def lamp(model, x, y, z, forward, radius, material):
    frame = Frame((x, y, z), (forward, 0, 0), (0, 1, 0), (0, 0, forward))
    bowl = [(radius + 0.022, -0.12), (radius + 0.022, 0.012, 0.014), (radius, 0.018, 0.008), (radius - 0.012, -0.01)]
    lathe(model, "chrome", rounded(bowl, steps=3), 28, frame)
    lathe(model, material, dome(radius - 0.006, 0.045, 6), 28, frame)


def fittings(model):
    for x in (-0.54, 0.54):
        lamp(model, x, 0.565, LENGTH - 0.045, 1, 0.115, "lamp")
        lamp(model, x, 0.385, LENGTH - 0.035, 1, 0.045, "amber")
        lamp(model, 1.08 * x, 0.60, -LENGTH + 0.05, -1, 0.085, "red")
        rounded_box(model, "trim", (0.16, 0.10, 0.08), 0.035, Frame((math.copysign(0.80, x), 0.865, 0.50)))
    for z in (LENGTH + 0.015, -LENGTH - 0.015):
        rounded_box(model, "chrome", (1.40, 0.085, 0.12), 0.04, Frame((0, 0.30, z)))
        for x in (-0.40, 0.40):
            rounded_box(model, "chrome", (0.06, 0.17, 0.10), 0.028, Frame((x, 0.325, z + math.copysign(0.03, z))))
    back = Frame((0.42, 0.205, -LENGTH - 0.05), (-1, 0, 0), (0, 1, 0), (0, 0, -1))
    lathe(model, "chrome", rounded([(0.045, -0.3), (0.045, 0.06, 0.006), (0.036, 0.06), (0.036, -0.05)]), 24, back)


def build(folder):
    m = Model("car")
    m.material("paint", (0.95, 0.95, 0.95), (0.80, 0.80, 0.80), (0.62, 0.62, 0.64), 70, texture="body.png")
    m.material("tyre", (0.09, 0.09, 0.10), (0.10, 0.10, 0.11), (0.16, 0.16, 0.16), 12)
    m.material("wheel", (0.90, 0.90, 0.92), (0.72, 0.72, 0.74), (0.60, 0.60, 0.60), 40, texture="wheel.png")
    m.material("trim", (0.08, 0.08, 0.09), (0.10, 0.10, 0.11), (0.42, 0.42, 0.42), 36)
    m.material("chrome", (0.62, 0.65, 0.70), (0.42, 0.44, 0.47), (0.95, 0.95, 0.95), 50)
    m.material("lamp", (0.90, 0.92, 0.86), (0.62, 0.64, 0.60), (0.95, 0.95, 0.95), 90)
    m.material("amber", (0.95, 0.50, 0.08), (0.80, 0.40, 0.05), (0.8, 0.7, 0.6), 70)
    m.material("red", (0.80, 0.05, 0.06), (0.72, 0.05, 0.05), (0.8, 0.6, 0.6), 70)
    m.object("body")
    hull(m)
    cabin(m)
    m.object("wheels")
    wheels(m)
    m.object("fittings")
    fittings(m)
    radius = m.recentre()
    m.save(folder)
    body_texture().save(os.path.join(folder, "body.png"))
    wheel_texture().save(os.path.join(folder, "wheel.png"))
    return m, radius
