"""Solids with flat faces of 3 to 12 corners: a ball of squares, hexagons and decagons on a board of pegs.

Every face is one polygon of the file. The edges are bevelled, and the bevels carry the normals of
the faces they join, so that they look round. The pegs are written with negative indices.
"""

import colorsys
import math
import os

from assets.mesh import Frame, Model, add, cross, dot, scale, sub, unit
from assets.paint import Canvas, clouds, noise, rgb

PHI = (1 + math.sqrt(5)) / 2


def ball():
    """The solid with 30 squares, 20 hexagons and 12 decagons; radius 1."""
    p = PHI
    seeds = [(1 / p, 1 / p, 3 + p), (2 / p, p, 1 + 2 * p), (1 / p, p * p, 3 * p - 1)]
    seeds += [(2 * p - 1, 2, 2 + p), (p, 3, 2 * p)]
    points = []
    for s in seeds:
        for k in range(3):
            for signs in range(8):
                q = [s[(i + k) % 3] * (-1 if signs >> i & 1 else 1) for i in range(3)]
                points.append(unit(q))
    # Decagons lie over the corners of an icosahedron, squares over its edges, hexagons over its faces.
    corners = [(0, a * p, b) for a in (-1, 1) for b in (-1, 1)]
    corners = [unit(c[k:] + c[:k]) for c in corners for k in range(3)]
    pairs = [(a, b) for a in corners for b in corners if a < b and dot(a, b) > 0.4]
    axes = corners + [unit(add(a, b)) for a, b in pairs]
    for a, b in pairs:
        axes += [unit(add(add(a, b), c)) for c in corners if b < c and dot(a, c) > 0.4 and dot(b, c) > 0.4]
    faces = []
    for axis in axes:
        best = max(dot(q, axis) for q in points)
        near = [i for i, q in enumerate(points) if dot(q, axis) > best - 1e-6]
        mean = scale(points[near[0]], 0)
        for i in near:
            mean = add(mean, points[i])
        x = unit(sub(points[near[0]], scale(mean, 1 / len(near))))
        y = cross(unit(mean), x)
        near.sort(key=lambda i: math.atan2(dot(points[i], y), dot(points[i], x)))
        faces.append(near)
    assert sorted(map(len, faces)) == [4] * 30 + [6] * 20 + [10] * 12
    return points, faces


def prism(n, radius, low, high, top_radius=None):
    """A prism or a frustum on n corners along y; its bottom face is last, its top face first."""
    top_radius = radius if top_radius is None else top_radius
    points = []
    for r, y in ((radius, low), (top_radius, high)):
        for k in range(n):
            a = 2 * math.pi * (k + 0.5) / n
            points.append((r * math.sin(a), y, r * math.cos(a)))
    faces = [[n + k for k in range(n)]]
    faces += [[k, (k + 1) % n, n + (k + 1) % n, n + k] for k in range(n)]
    return points, faces + [list(reversed(range(n)))]


def bevelled(model, solid, bevel, face_material, bevel_material, frame=Frame(), uv=None):
    """Adds a convex solid with its edges bevelled; face_material maps a face's number to a name.

    uv maps (face number, placed points, normal) to texture coordinates, or to None.
    """
    points, faces = solid
    normals, inner, owner = [], {}, {}
    for f, corners in enumerate(faces):
        ring = [points[i] for i in corners]
        normals.append(unit(cross(sub(ring[1], ring[0]), sub(ring[2], ring[1]))))
        for k, i in enumerate(corners):
            p, before, after = ring[k], unit(sub(ring[k - 1], ring[k])), unit(sub(ring[(k + 1) % len(ring)], ring[k]))
            sine = math.sqrt(1 - dot(before, after) ** 2)
            inner[f, i] = frame.place(add(p, scale(add(before, after), bevel / sine)))
            owner[i, corners[(k + 1) % len(corners)]] = f
    turned = [frame.turn(n) for n in normals]
    for f, corners in enumerate(faces):
        ring = [inner[f, i] for i in corners]
        model.face(face_material(f), ring, [turned[f]] * len(ring), uv and uv(f, ring, turned[f]))
    for (a, b), f in owner.items():
        if a < b:
            g = owner[b, a]
            keys = [(f, a), (g, a), (g, b), (f, b)]
            model.face(bevel_material, [inner[k] for k in keys], [turned[k[0]] for k in keys])
    starts = {}
    for (a, b), f in owner.items():
        starts.setdefault(a, (f, b))
    for v, (f, _) in starts.items():
        around, g = [], f
        while not around or g != f:
            around.append(g)
            corners = faces[g]
            g = owner[v, corners[corners.index(v) - 1]]
        model.face(bevel_material, [inner[g, v] for g in around], [turned[g] for g in around])


def rosette():
    """The decagons' inlay: a ten-pointed star of two tones in a gold ring."""
    size = 256
    canvas = Canvas(size, size)
    mid = size / 2
    gold, light = rgb("d9a441"), rgb("f3d58a")

    def base(x, y):
        r = math.hypot(x - mid, y - mid) / mid
        return tuple(a + (b - a) * r for a, b in zip(rgb("1d6a8c"), rgb("0b3350")))

    canvas.each(base)
    canvas.ring(mid, mid, 0.74 * mid, 0.80 * mid, gold, soft=1.5)

    def spot(k, r):
        a = math.radians(18 * k)
        return mid + r * mid * math.cos(a), mid - r * mid * math.sin(a)

    for k in range(10):
        tip, left, right = spot(2 * k, 0.66), spot(2 * k + 1, 0.30), spot(2 * k - 1, 0.30)
        canvas.polygon([(mid, mid), right, tip], gold)
        canvas.polygon([(mid, mid), tip, left], light)
    canvas.disc(mid, mid, 0.15 * mid, rgb("0b3350"))
    canvas.disc(mid, mid, 0.09 * mid, light)
    return canvas


def wood():
    size = 512
    canvas = Canvas(size, size)
    dark, light = rgb("4a2b18"), rgb("9a6a3f")

    def shade(x, y):
        u, v = x / size, y / size
        bend = clouds(u * 2, v * 2, 3, 21, 2)
        rings = 0.5 + 0.5 * math.sin((v * 9 + bend * 5.0) * 2 * math.pi)
        fibre = noise(u * 10, v * 150, 4)
        t = 0.15 + 0.50 * rings**2 + 0.30 * fibre
        c = [a + (b - a) * t for a, b in zip(dark, light)]
        return tuple(c)

    canvas.each(shade)
    return canvas


def planar(f, ring, normal):
    """Texture coordinates that look along the face: the first corner's direction is u."""
    mean = scale(ring[0], 0)
    for p in ring:
        mean = add(mean, scale(p, 1 / len(ring)))
    x = unit(sub(ring[0], mean))
    y = cross(normal, x)
    reach = 2 * max(dot(sub(p, mean), x) for p in ring)
    return [(0.5 + dot(sub(p, mean), x) / reach, 0.5 + dot(sub(p, mean), y) / reach) for p in ring]


def board_uv(f, ring, normal):
    if abs(normal[1]) > 0.9:
        return [(0.5 + p[0] / 4.0, 0.5 - p[2] / 4.0) for p in ring]
    side = unit(cross((0, 1, 0), normal))
    return [(0.5 + dot(p, side) / 4.0, 0.1 * f + p[1] / 4.0) for p in ring]


def build(folder):
    m = Model("polyhedra", relative=["pegs"])
    m.material("board", (0.85, 0.85, 0.85), (0.75, 0.75, 0.75), (0.22, 0.20, 0.18), 40, texture="wood.png")
    m.material("edge", (0.34, 0.22, 0.13), (0.36, 0.23, 0.14), (0.35, 0.32, 0.28), 40)
    m.material("gold", (0.62, 0.44, 0.16), (0.62, 0.43, 0.15), (0.85, 0.72, 0.45), 36)
    m.material("decagon", (0.95, 0.95, 0.95), (0.80, 0.80, 0.80), (0.45, 0.45, 0.45), 60, texture="rosette.png")
    m.material("hexagon", (0.62, 0.10, 0.11), (0.66, 0.11, 0.12), (0.50, 0.46, 0.46), 60)
    m.material("square", (0.86, 0.82, 0.74), (0.74, 0.71, 0.64), (0.40, 0.40, 0.40), 60)
    for n in range(3, 13):
        c = colorsys.hsv_to_rgb((n - 3) / 10, 0.62, 0.76)
        m.material("peg%d" % n, c, scale(c, 0.86), (0.42, 0.42, 0.42), 50)

    m.object("board")
    bevelled(m, prism(12, 2.0, 0.0, 0.2), 0.045, lambda f: "board", "edge", uv=board_uv)
    bevelled(m, prism(8, 0.62, 0.2, 0.50, 0.42), 0.03, lambda f: "gold", "gold")
    m.object("ball")
    tilt = -math.atan(1 / PHI)  # a decagon lies on the foot
    c, s = math.cos(tilt), math.sin(tilt)
    seat = Frame((0, 1.44, 0), (1, 0, 0), (0, c, s), (0, -s, c))
    solid = ball()
    kinds = {4: "square", 6: "hexagon", 10: "decagon"}

    def kind(f):
        return kinds[len(solid[1][f])]

    bevelled(m, solid, 0.022, kind, "gold", seat, lambda f, r, n: planar(f, r, n) if kind(f) == "decagon" else None)
    m.object("pegs")
    for n in range(3, 13):
        a = 2 * math.pi * (n - 3) / 10
        out = (math.sin(a), 0, math.cos(a))
        peg = Frame(scale(out, 1.48), (out[2], 0, -out[0]), (0, 1, 0), out)
        bevelled(m, prism(n, 0.27, 0.2, 0.62), 0.03, lambda f: "peg%d" % n, "peg%d" % n, peg)
    radius = m.recentre()
    m.save(folder)
    rosette().save(os.path.join(folder, "rosette.png"))
    wood().save(os.path.join(folder, "wood.png"))
    return m, radius
