"""Reads the PNG files that the tool writes: 8-bit RGBA, not interlaced."""

import struct
import zlib


def read_png(data):
    """Returns (width, height, rows); rows from the top, each a list of (r, g, b, a)."""
    assert data[:8] == b"\x89PNG\r\n\x1a\n", "not a PNG"
    at, packed = 8, b""
    while at < len(data):
        (length,) = struct.unpack(">I", data[at : at + 4])
        kind, body = data[at + 4 : at + 8], data[at + 8 : at + 8 + length]
        assert struct.unpack(">I", data[at + 8 + length : at + 12 + length])[0] == zlib.crc32(kind + body)
        if kind == b"IHDR":
            width, height, *form = struct.unpack(">IIBBBBB", body)
            assert form == [8, 6, 0, 0, 0], "not 8-bit RGBA"
        elif kind == b"IDAT":
            packed += body
        at += 12 + length
    assert kind == b"IEND"
    return width, height, unfilter(zlib.decompress(packed), width, height)


def unfilter(raw, width, height):
    stride, rows, above = 4 * width, [], bytes(4 * width)
    assert len(raw) == (stride + 1) * height
    for y in range(height):
        start = y * (stride + 1)
        mode, line = raw[start], bytearray(raw[start + 1 : start + 1 + stride])
        for i in range(stride):
            left = line[i - 4] if i >= 4 else 0
            corner = above[i - 4] if i >= 4 else 0
            line[i] = (line[i] + predicted(mode, left, above[i], corner)) & 255
        rows.append([tuple(line[i : i + 4]) for i in range(0, stride, 4)])
        above = line
    return rows


def predicted(mode, left, up, corner):
    if mode == 4:
        guess = left + up - corner
        return min((left, up, corner), key=lambda value: abs(guess - value))
    return (0, left, up, (left + up) // 2)[mode]
