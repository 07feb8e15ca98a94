"""A small painter for textures: shapes by signed distance, a stroke font, noise, PNG files.

Pixel (0, 0) is the top left corner. Distances are in pixels, negative inside; an edge is one pixel
wide, so every shape is anti-aliased.
"""

import math
import struct
import zlib

from assets.shapes import arc


class Canvas:
    def __init__(self, width, height, colour=(0, 0, 0), alpha=None):
        self.width, self.height = width, height
        self.rgb = [tuple(colour)] * (width * height)  # 0 to 1
        self.alpha = None if alpha is None else [alpha] * (width * height)

    def each(self, shade):
        """Sets every pixel to shade(x, y), the position of its middle."""
        w = self.width
        self.rgb = [shade(i % w + 0.5, i // w + 0.5) for i in range(w * self.height)]

    def fill(self, distance, box, colour, strength=1.0, soft=1.0):
        """Blends a colour over the pixels where distance(x, y) is below 0, within a box."""
        x0, y0 = max(0, int(box[0])), max(0, int(box[1]))
        x1, y1 = min(self.width, int(box[2]) + 1), min(self.height, int(box[3]) + 1)
        varies = callable(colour)
        for y in range(y0, y1):
            for x in range(x0, x1):
                a = (0.5 - distance(x + 0.5, y + 0.5) / soft) * strength
                if a <= 0:
                    continue
                a = min(a, strength)
                i = y * self.width + x
                r, g, b = self.rgb[i]
                c = colour(x + 0.5, y + 0.5) if varies else colour
                self.rgb[i] = (r + (c[0] - r) * a, g + (c[1] - g) * a, b + (c[2] - b) * a)

    def line(self, a, b, width, colour, strength=1.0, soft=1.0):
        self.fill(*stroke([a, b], width), colour, strength, soft)

    def disc(self, cx, cy, r, colour, strength=1.0, soft=1.0):
        m = r + soft
        self.fill(lambda x, y: math.hypot(x - cx, y - cy) - r, (cx - m, cy - m, cx + m, cy + m), colour, strength, soft)

    def ring(self, cx, cy, r0, r1, colour, from_deg=0.0, to_deg=360.0, strength=1.0, soft=1.0):
        """An annulus sector; angles count clockwise on the picture from the right."""
        mid, half, span = (r0 + r1) / 2, (r1 - r0) / 2, to_deg - from_deg

        def distance(x, y):
            d = math.hypot(x - cx, y - cy)
            radial = abs(d - mid) - half
            if span >= 360 or radial > soft:
                return radial
            a = (math.degrees(math.atan2(y - cy, x - cx)) - from_deg) % 360
            ends = max(-a if a < 180 + span / 2 else 360 - a, a - span if a < 180 + span / 2 else -360.0)
            return max(radial, math.radians(ends) * d)

        m = r1 + soft
        self.fill(distance, (cx - m, cy - m, cx + m, cy + m), colour, strength, soft)

    def rect(self, x0, y0, x1, y1, colour, radius=0.0, strength=1.0, soft=1.0):
        cx, cy, hw, hh = (x0 + x1) / 2, (y0 + y1) / 2, (x1 - x0) / 2 - radius, (y1 - y0) / 2 - radius

        def distance(x, y):
            dx, dy = abs(x - cx) - hw, abs(y - cy) - hh
            return math.hypot(max(dx, 0), max(dy, 0)) + min(max(dx, dy), 0) - radius

        self.fill(distance, (x0 - soft, y0 - soft, x1 + soft, y1 + soft), colour, strength, soft)

    def polygon(self, points, colour, strength=1.0, soft=1.0):
        edges = list(zip(points, points[1:] + points[:1]))

        def distance(x, y):
            inside, best = False, 1e30
            for (ax, ay), (bx, by) in edges:
                best = min(best, segment_distance(x, y, ax, ay, bx, by))
                if (ay > y) != (by > y) and x < (bx - ax) * (y - ay) / (by - ay) + ax:
                    inside = not inside
            return -best if inside else best

        xs, ys = [p[0] for p in points], [p[1] for p in points]
        self.fill(distance, (min(xs) - soft, min(ys) - soft, max(xs) + soft, max(ys) + soft), colour, strength, soft)

    def text(self, string, cx, cy, height, weight, colour, strength=1.0, angle=0.0, spread=1.0, soft=1.0):
        """Writes centred text; `weight` is the stroke width, `angle` turns it clockwise in degrees."""
        c, s = math.cos(math.radians(angle)), math.sin(math.radians(angle))
        advance = [(glyph_width(ch) * spread + 0.24) * height for ch in string]
        x = -(sum(advance) - 0.24 * height) / 2
        for ch, step in zip(string, advance):
            for line in GLYPHS[ch]:
                points = []
                for px, py in line:
                    gx, gy = x + px * height * spread, (0.5 - py) * height
                    points.append((cx + gx * c - gy * s, cy + gx * s + gy * c))
                self.fill(*stroke(points, weight), colour, strength, soft)
            x += step

    def save(self, path):
        def byte(v):
            return 0 if v <= 0 else 255 if v >= 1 else int(v * 255 + 0.5)

        rows, channels = [], 3 if self.alpha is None else 4
        for y in range(self.height):
            row = bytearray()
            for i in range(y * self.width, (y + 1) * self.width):
                row += bytes(map(byte, self.rgb[i]))
                if self.alpha is not None:
                    row.append(byte(self.alpha[i]))
            left = bytes(channels) + row[:-channels]
            rows.append(b"\x01" + bytes((a - b) & 255 for a, b in zip(row, left)))  # filter 1: minus the pixel before
        header = struct.pack(">IIBBBBB", self.width, self.height, 8, 2 if channels == 3 else 6, 0, 0, 0)
        with open(path, "wb") as f:
            f.write(b"\x89PNG\r\n\x1a\n")
            for kind, body in ((b"IHDR", header), (b"IDAT", zlib.compress(b"".join(rows), 9)), (b"IEND", b"")):
                f.write(struct.pack(">I", len(body)) + kind + body + struct.pack(">I", zlib.crc32(kind + body)))


def segment_distance(x, y, ax, ay, bx, by):
    dx, dy = bx - ax, by - ay
    n = dx * dx + dy * dy
    t = 0.0 if n == 0 else max(0.0, min(1.0, ((x - ax) * dx + (y - ay) * dy) / n))
    return math.hypot(x - ax - dx * t, y - ay - dy * t)


def stroke(points, width):
    """Distance function and box of a polyline with round ends."""
    segments = [(*a, *b) for a, b in zip(points, points[1:])]
    half = width / 2

    def distance(x, y):
        return min(segment_distance(x, y, *s) for s in segments) - half

    xs, ys, m = [p[0] for p in points], [p[1] for p in points], half + 2
    return distance, (min(xs) - m, min(ys) - m, max(xs) + m, max(ys) + m)


def noise(x, y, seed=0, period=0):
    """Smooth value noise, 0 to 1; with a period it repeats after that many cells."""
    ix, iy = math.floor(x), math.floor(y)
    fx, fy = x - ix, y - iy
    fx, fy = fx * fx * (3 - 2 * fx), fy * fy * (3 - 2 * fy)

    def cell(i, j):
        if period:
            i, j = i % period, j % period
        h = (i * 374761393 + j * 668265263 + seed * 2147483647) & 0xFFFFFFFF
        h = ((h ^ (h >> 13)) * 1274126177) & 0xFFFFFFFF
        return ((h ^ (h >> 16)) & 0xFFFF) / 65535

    a = cell(ix, iy) + (cell(ix + 1, iy) - cell(ix, iy)) * fx
    b = cell(ix, iy + 1) + (cell(ix + 1, iy + 1) - cell(ix, iy + 1)) * fx
    return a + (b - a) * fy


def clouds(x, y, octaves=4, seed=0, period=0):
    total = weight = 0.0
    for k in range(octaves):
        total += noise(x * 2**k, y * 2**k, seed + k, period * 2**k) * 0.5**k
        weight += 0.5**k
    return total / weight


def rgb(code):
    """A colour from RRGGBB."""
    return tuple(int(code[i : i + 2], 16) / 255 for i in (0, 2, 4))


def bow(cx, cy, rx, ry, from_deg, to_deg, steps=10):
    return arc(cx, cy, rx, from_deg, to_deg, steps, ry)


# Strokes of each glyph, one unit high, baseline at 0.
GLYPHS = {
    "0": [bow(0.29, 0.71, 0.29, 0.29, 0, 180) + bow(0.29, 0.29, 0.29, 0.29, 180, 360) + [(0.58, 0.71)]],
    "1": [[(0.02, 0.74), (0.3, 1.0), (0.3, 0.0)]],
    "2": [bow(0.29, 0.71, 0.28, 0.29, 165, -28) + [(0.0, 0.0), (0.58, 0.0)]],
    "3": [bow(0.28, 0.75, 0.26, 0.25, 155, -90) + bow(0.28, 0.26, 0.3, 0.26, 90, -155)],
    "4": [[(0.46, 0.0), (0.46, 1.0), (0.0, 0.26), (0.62, 0.26)]],
    "5": [[(0.54, 1.0), (0.08, 1.0), (0.03, 0.53)] + bow(0.28, 0.31, 0.29, 0.31, 130, -150)],
    "6": [[(0.43, 1.0), (0.06, 0.45)] + bow(0.29, 0.3, 0.29, 0.3, 150, 510, 16)],
    "7": [[(0.0, 1.0), (0.58, 1.0), (0.18, 0.0)]],
    "8": [bow(0.29, 0.75, 0.25, 0.25, 270, 630, 16), bow(0.29, 0.26, 0.29, 0.26, 90, 450, 16)],
    "9": [[(0.15, 0.0), (0.52, 0.55)] + bow(0.29, 0.7, 0.29, 0.3, -30, 330, 16)],
    "D": [[(0.0, 0.0), (0.0, 1.0), (0.24, 1.0)] + bow(0.24, 0.5, 0.34, 0.5, 90, -90) + [(0.0, 0.0)]],
    "M": [[(0.0, 0.0), (0.0, 1.0), (0.36, 0.35), (0.72, 1.0), (0.72, 0.0)]],
    "h": [[(0.0, 1.0), (0.0, 0.0)], [(0.0, 0.42)] + bow(0.23, 0.42, 0.23, 0.25, 180, 0) + [(0.46, 0.0)]],
    "k": [[(0.0, 1.0), (0.0, 0.0)], [(0.42, 0.66), (0.0, 0.26)], [(0.15, 0.4), (0.45, 0.0)]],
    "m": [
        [(0.0, 0.67), (0.0, 0.0)],
        bow(0.19, 0.46, 0.19, 0.21, 180, 0) + [(0.38, 0.0)],
        bow(0.57, 0.46, 0.19, 0.21, 180, 0) + [(0.76, 0.0)],
    ],
    "/": [[(0.0, -0.1), (0.42, 1.08)]],
    ".": [[(0.0, 0.0), (0.0, 0.02)]],
    " ": [],
}


def glyph_width(ch):
    return max((x for line in GLYPHS[ch] for x, _ in line), default=0.35)
