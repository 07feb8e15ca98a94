"""Solids for the sample models: rounded outlines, turned parts, extruded plates, rounded boxes."""

import math

from assets.mesh import Frame, add, cross, dot, scale, sub, unit


def arc(cx, cy, r, from_deg, to_deg, steps, ry=None):
    """Points on an ellipse arc, ends included."""
    out = []
    for i in range(steps + 1):
        a = math.radians(from_deg + (to_deg - from_deg) * i / steps)
        out.append((cx + r * math.cos(a), cy + (r if ry is None else ry) * math.sin(a)))
    return out


def rounded(points, radius=0.0, closed=False, steps=4):
    """Turns corner points into [(x, y, nx, ny)], the normal to the right of the way.

    `radius` is one number or one per corner; 0 keeps a sharp corner, which appears twice, once with
    each normal. A corner may also be (x, y, radius).
    """
    n = len(points)
    corner = [(p[0], p[1], p[2] if len(p) > 2 else radius) for p in points]
    out = []

    def direction(a, b):
        dx, dy = b[0] - a[0], b[1] - a[1]
        d = math.hypot(dx, dy)
        return dx / d, dy / d, d

    for i, (x, y, r) in enumerate(corner):
        first, last = not closed and i == 0, not closed and i == n - 1
        if not first:
            ix, iy, before = direction(corner[i - 1], corner[i])
        if not last:
            ox, oy, after = direction(corner[i], corner[(i + 1) % n])
        if first or last:
            dx, dy = (ox, oy) if first else (ix, iy)
            out.append((x, y, dy, -dx))
            continue
        turn = math.atan2(ix * oy - iy * ox, ix * ox + iy * oy)
        if abs(turn) < 1e-6:
            out.append((x, y, iy, -ix))
            continue
        if r <= 0:
            out += [(x, y, iy, -ix), (x, y, oy, -ox)]
            continue
        cut = min(r * math.tan(abs(turn) / 2), before * 0.49, after * 0.49)
        r = cut / math.tan(abs(turn) / 2)
        side = 1 if turn > 0 else -1
        cx, cy = x - ix * cut - iy * r * side, y - iy * cut + ix * r * side
        count = max(1, round(steps * abs(turn) / (math.pi / 2)))
        for k in range(count + 1):
            a = turn * k / count
            nx, ny = iy * math.cos(a) + ix * math.sin(a), -ix * math.cos(a) + iy * math.sin(a)
            out.append((cx + nx * r * side, cy + ny * r * side, nx, ny))
    if closed:
        out.append(out[0])
    return out


def soft(points, crease_deg=35.0, closed=True):
    """Gives a polyline the normals of the curve it follows; turns beyond the crease stay sharp."""
    n, out = len(points), []

    def way(a, b):
        d = math.hypot(b[0] - a[0], b[1] - a[1])
        return (b[0] - a[0]) / d, (b[1] - a[1]) / d

    for i, (x, y) in enumerate(points):
        into = way(points[i - 1], (x, y)) if closed or i > 0 else None
        onto = way((x, y), points[(i + 1) % n]) if closed or i < n - 1 else into
        into = into or onto
        turn = math.degrees(math.atan2(into[0] * onto[1] - into[1] * onto[0], into[0] * onto[0] + into[1] * onto[1]))
        if abs(turn) > crease_deg:
            out += [(x, y, into[1], -into[0]), (x, y, onto[1], -onto[0])]
        else:
            nx, ny = into[1] + onto[1], -into[0] - onto[0]
            d = math.hypot(nx, ny)
            out.append((x, y, nx / d, ny / d))
    if closed:
        out.append(out[0])
    return out


def lathe(model, material, outline, segments=64, frame=Frame(), start=0.0, sweep=360.0, uv=None):
    """Turns an outline of (r, h, nr, nh) about the frame's z axis; h runs along z.

    Outside lies to the right of the outline as it is walked with r to the right and h upwards.
    uv maps (angle fraction, outline fraction, r, x, y, h) to a texture coordinate.
    """
    lengths = [0.0]
    for a, b in zip(outline, outline[1:]):
        lengths.append(lengths[-1] + math.hypot(b[0] - a[0], b[1] - a[1]))
    rows = []
    for (r, h, nr, nh), s in zip(outline, lengths):
        row = []
        for i in range(segments + 1):
            a = math.radians(start + sweep * (i % segments if sweep == 360.0 else i) / segments)
            c, d = math.cos(a), math.sin(a)
            t = uv and uv(i / segments, s / lengths[-1], r, r * c, r * d, h)
            row.append((frame.place((r * c, r * d, h)), frame.turn((nr * c, nr * d, nh)), t))
        rows.append(row)
    for k, (r0, r1) in enumerate(zip(rows, rows[1:])):
        if lengths[k + 1] - lengths[k] > 1e-7:
            model.grid(material, [r0, r1])


def dome(radius, rise, steps, foot=0.0):
    """The outline of a spherical cap whose rim lies at the height `foot`, from the rim to the top."""
    ball, out = (radius * radius + rise * rise) / (2 * rise), []
    for k in range(steps + 1):
        r = max(radius * (1 - k / steps), 0.0001)
        h = foot + math.sqrt(ball * ball - r * r) - (ball - rise)
        out.append((r, h, r / ball, math.sqrt(1 - (r / ball) ** 2)))
    return out


def fan(points):
    """Ear clipping of a simple counter-clockwise polygon of 2D points; triangles of indices."""
    index = list(range(len(points)))

    def cross2(a, b, c):
        (ax, ay), (bx, by), (cx, cy) = points[a][:2], points[b][:2], points[c][:2]
        return (bx - ax) * (cy - ay) - (by - ay) * (cx - ax)

    out = []
    while len(index) > 3:
        best = None
        for k in range(len(index)):
            a, b, c = index[k - 1], index[k], index[(k + 1) % len(index)]
            if cross2(a, b, c) <= 1e-12:
                continue
            if any(
                p not in (a, b, c) and cross2(a, b, p) >= 0 and cross2(b, c, p) >= 0 and cross2(c, a, p) >= 0
                for p in index
            ):
                continue
            (ax, ay), (cx, cy) = points[a][:2], points[c][:2]
            size = math.hypot(ax - cx, ay - cy)
            if best is None or size < best[0] - 1e-9:
                best = (size, k, (a, b, c))
        assert best, "the polygon is not simple"
        out.append(best[2])
        index.pop(best[1])
    out.append(tuple(index))
    return out


def mitres(outline):
    """The way inwards at each point, for one unit of inset: at a sharp corner it is the mitre."""
    inward = [(-nx, -ny) for _, _, nx, ny in outline]
    for i, (a, b) in enumerate(zip(outline, outline[1:])):
        if math.hypot(a[0] - b[0], a[1] - b[1]) < 1e-9:
            k = -1 / (1 + a[2] * b[2] + a[3] * b[3])
            inward[i] = inward[i + 1] = ((a[2] + b[2]) * k, (a[3] + b[3]) * k)
    inward[-1] = inward[0]
    return inward


def extrude(model, material, outline, low, high, frame=Frame(), bevel=0.0, side_material=None, steps=3, uv=None):
    """A plate: a closed, counter-clockwise outline of `rounded` between two heights along z.

    The rims are rounded by `bevel`. Caps are flat; uv maps (x, y, z, normal in the frame) to a
    texture coordinate.
    """
    def sample(x, y, z, normal):
        return frame.place((x, y, z)), frame.turn(normal), uv and uv(x, y, z, normal)

    levels = []  # (inset, z, weight of the outline normal, weight of the axis)
    if bevel > 0:
        for k in range(steps + 1):
            a = math.pi / 2 * k / steps
            levels.append((bevel * (1 - math.sin(a)), low + bevel * (1 - math.cos(a)), math.sin(a), -math.cos(a)))
        levels += [(i, low + high - z, s, -c) for i, z, s, c in reversed(levels)]
    else:
        levels = [(0, low, 1, 0), (0, high, 1, 0)]
    inward = mitres(outline)
    rows = []
    for inset, z, side, axis in levels:
        rows.append(
            [
                sample(x + ix * inset, y + iy * inset, z, (nx * side, ny * side, axis))
                for (x, y, nx, ny), (ix, iy) in zip(outline, inward)
            ]
        )
    model.grid(side_material or material, rows)
    inset = levels[0][0]
    rim = []
    for (x, y, _, _), (ix, iy) in zip(outline[:-1], inward):
        p = (x + ix * inset, y + iy * inset)
        if not rim or math.hypot(p[0] - rim[-1][0], p[1] - rim[-1][1]) > 1e-6:
            rim.append(p)
    if math.hypot(rim[0][0] - rim[-1][0], rim[0][1] - rim[-1][1]) < 1e-6:
        rim.pop()
    for a, b, c in fan(rim):
        model.patch(material, [sample(*rim[i], high, (0, 0, 1)) for i in (a, b, c)])
        model.patch(material, [sample(*rim[i], low, (0, 0, -1)) for i in (c, b, a)])


def rounded_box(model, material, size, radius, frame=Frame(), steps=3, uv=None):
    """A box with rounded edges and corners, centred in the frame; uv maps (point, normal)."""
    half = [s / 2 - radius for s in size]
    axes = [(1, 0, 0), (0, 1, 0), (0, 0, 1)]

    def sample(base, normal):
        p = add(base, scale(normal, radius))
        return frame.place(p), frame.turn(normal), uv and uv(p, normal)

    def corner(signs):
        return tuple(s * h for s, h in zip(signs, half))

    for i in range(3):
        j, k = (i + 1) % 3, (i + 2) % 3
        for s in (1, -1):
            n = scale(axes[i], s)
            quad = []
            for a, b in ((-1, -1), (1, -1), (1, 1), (-1, 1)):
                signs = [0, 0, 0]
                signs[i], signs[j], signs[k] = s, a, b
                quad.append(sample(corner(signs), n))
            model.patch(material, quad, flip=s < 0)
            for b in (1, -1):  # the edge along axis k between the faces +-i and +-j
                rows = []
                for t in range(steps + 1):
                    a = math.pi / 2 * t / steps
                    m = add(scale(n, math.cos(a)), scale(axes[j], b * math.sin(a)))
                    ends = []
                    for c in (-1, 1):
                        signs = [0, 0, 0]
                        signs[i], signs[j], signs[k] = s, b, c
                        ends.append(sample(corner(signs), unit(m)))
                    rows.append(ends)
                model.grid(material, rows, flip=s * b > 0)
    for sx in (1, -1):
        for sy in (1, -1):
            for sz in (1, -1):
                rows = []
                for t in range(steps + 1):
                    a = math.pi / 2 * t / steps
                    row = []
                    for q in range(steps + 1):
                        b = math.pi / 2 * q / steps
                        m = (sx * math.cos(a) * math.cos(b), sy * math.cos(a) * math.sin(b), sz * math.sin(a))
                        row.append(sample(corner((sx, sy, sz)), unit(m)))
                    rows.append(row)
                model.grid(material, rows, flip=sx * sy * sz < 0)


def along(origin, z, x_hint=(1, 0, 0)):
    """A frame whose z axis points along `z`, with x as near to `x_hint` as it can be."""
    z = unit(z)
    x = sub(x_hint, scale(z, dot(x_hint, z)))
    if dot(x, x) < 1e-9:
        x = sub((0, 0, 1), scale(z, z[2]))
    x = unit(x)
    return Frame(origin, x, cross(z, x), z)
