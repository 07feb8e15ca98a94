"""Polished metal without an environment map: a studio's reflection painted into a texture."""

import math

from assets.paint import Canvas

SKY, ZENITH = (0.97, 0.98, 1.0), (0.36, 0.42, 0.52)
FLOOR_FAR, FLOOR_NEAR = (0.10, 0.105, 0.12), (0.62, 0.60, 0.58)


def studio(x, y, z):
    """What a mirror sees in direction (x, y, z): bright sky over a dark horizon, and two lamps."""
    if y > 0:
        t = min(1.0, y) ** 0.7
        c = [a + (b - a) * t for a, b in zip(SKY, ZENITH)]
    else:
        t = min(1.0, -y) ** 1.3
        c = [a + (b - a) * t for a, b in zip(FLOOR_FAR, FLOOR_NEAR)]
    edge = max(0.0, 1 - abs(y) / 0.22) ** 2  # soften the horizon
    c = [v + (0.5 - v) * edge for v in c]
    for lx, ly, lz, size, power in ((-0.55, 0.62, 0.56, 0.16, 0.7), (0.8, 0.35, 0.48, 0.1, 0.45)):
        d = math.acos(max(-1.0, min(1.0, x * lx + y * ly + z * lz)))
        c = [v + power * math.exp(-((d / size) ** 2)) for v in c]
    return tuple(min(1.0, v) for v in c)


def mirror(nx, ny, nz):
    """The reflection that a viewer on the z axis sees at a normal."""
    return studio(2 * nz * nx, 2 * nz * ny, 2 * nz * nz - 1)


def chrome_strip(outline, width=512, height=64, tint=(1, 1, 1)):
    """A texture for a part turned from `outline` about z: u is the angle, v the way along it.

    It goes with the uv (angle fraction, outline fraction).
    """
    lengths = [0.0]
    for a, b in zip(outline, outline[1:]):
        lengths.append(lengths[-1] + math.hypot(b[0] - a[0], b[1] - a[1]))

    def shade(px, py):
        s = (1 - py / height) * lengths[-1]
        k = 0
        while k + 2 < len(lengths) and lengths[k + 1] <= s:
            k += 1
        span = lengths[k + 1] - lengths[k]
        t = (s - lengths[k]) / span if span else 0.0
        nr = outline[k][2] + (outline[k + 1][2] - outline[k][2]) * t
        nh = outline[k][3] + (outline[k + 1][3] - outline[k][3]) * t
        size = math.hypot(nr, nh)
        a = 2 * math.pi * px / width
        c = mirror(nr / size * math.cos(a), nr / size * math.sin(a), nh / size)
        return tuple(v * t for v, t in zip(c, tint))

    canvas = Canvas(width, height)
    canvas.each(shade)
    return canvas
