"""A scene of the gauge with a needle that turns.

needle_RZ, clockwise negative, is 0 at 0 km/h and -270 at full scale.
"""

import os

from assets import gauge
from assets.paint import Canvas, segment_distance
from assets.scene import Group, save
from assets.mesh import Model

LIFT = 0.25  # the case reaches farther back than forward: bring its middle to the origin
SHADOW = (-0.16, 0.76, -0.10, 0.10)  # left, right, low, high of the needle's shadow


def shadow_texture(width=256, height=64):
    """Black, as dense as little light comes by the needle."""
    left, right, low, high = SHADOW
    canvas = Canvas(width, height, (0, 0, 0), 0.0)
    for i in range(width * height):
        x = left + ((i % width) + 0.5) / width * (right - left)
        y = high - ((i // width) + 0.5) / height * (high - low)
        thick = 0.034 - 0.026 * min(1.0, max(0.0, x / 0.70))
        d = segment_distance(x, y, -0.10, 0, 0.70, 0) - thick
        canvas.alpha[i] = 0.62 * min(1.0, max(0.0, 1 - d / 0.045)) ** 2 if d > 0 else 0.62
    return canvas


def build(library, folder):
    root = Group("speedometer", reach=1.01)
    instrument = root.group("instrument", (0, 0, LIFT))
    palette = Model("")
    gauge.materials(palette)
    palette.material("shadow", (0, 0, 0), (0, 0, 0), texture="shadow.png")
    materials = palette.materials
    for name in ("bezel", "glass"):
        materials[name].texture = "../gauge/" + materials[name].texture

    gauge.case(instrument.model(materials))
    zero = instrument.group("zero", rotation=(0, 0, gauge.angle(0)))
    needle = zero.group("needle")
    left, right, low, high = SHADOW
    corners = [(left, low), (right, low), (right, high), (left, high)]
    needle.model(materials).face(
        "shadow", [(x, y, 0.006) for x, y in corners], [(0, 0, 1)] * 4, [(0, 0), (1, 0), (1, 1), (0, 1)]
    )
    gauge.needle(needle.model(materials), 0)
    gauge.hub(instrument.model(materials))
    gauge.glass(instrument.model(materials))

    gauge.dial_texture(None).save(os.path.join(folder, "dial.png"))
    shadow_texture().save(os.path.join(folder, "shadow.png"))
    return save(library, os.path.join(folder, "speedometer.qel"), root)
