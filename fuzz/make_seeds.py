#!/usr/bin/env python3
"""Writes the small files that fuzzing starts from: make_seeds.py FOLDER, which gets a folder for each kind."""

import os
import struct
import sys
import zlib

# ---- Chunks. A record is its bytes and its declared size, which counts embedded records with headers. -----


def extent(size):
    return size + 8 + size % 2


class Record:
    def __init__(self, data=b"", size=None):
        self.data, self.size = data, len(data) if size is None else size

    def field(self, form, *values, counts=None):
        """`counts`: what the declared size grows by, where that is not the number of bytes."""
        added = struct.pack(">" + form, *values)
        self.data, self.size = self.data + added, self.size + (len(added) if counts is None else counts)
        return self

    def embed(self, other):
        self.data, self.size = self.data + other.data, self.size + extent(other.size)
        return self

    def raw(self, data):
        return self.embed(Record(data + bytes(len(data) % 2), len(data)))


def chunk(kind, content):
    content = Record(content + bytes(len(content) % 2), len(content)) if isinstance(content, bytes) else content
    return Record(kind + struct.pack(">i", content.size) + content.data, content.size)


def container(kind, type_, *chunks):
    body = Record(type_)
    for each in chunks:
        body.embed(each)
    return chunk(kind, body)


# ---- Scene files -----------------------------------------------------------------------------------------

IDENTITY = (1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1)
HEADER = chunk(b"SHDR", struct.pack(">HH", 2, 0))


def material(*maps):
    return Record().field("15f7H", *(0.0625 * i for i in range(15)), *maps)


def mesh(vertices, indices, materials=(), flags=(0, 0, 0, 0)):
    record = Record().field("iiI4B16f", vertices, len(indices) // 3, len(materials), *flags, *IDENTITY, counts=74)
    for start, maps in materials:
        record.field("I", start).embed(material(*maps))
    triples = struct.pack("<%df" % (vertices * 3), *(i * i % 7 - 3 for i in range(vertices * 3)))
    for used in (1,) + flags[:3]:
        if used:
            record.raw(triples)
    for _ in range(flags[3]):
        record.raw(triples[: vertices * 8])
    return record.raw(struct.pack("<%dI" % len(indices), *indices))


def light(name, kind):
    return Record().field("i", len(name)).raw(name).field("i3ff", kind, 0.25, 0.5, 1, 80)


def group(name, *nodes):
    record = Record().field("i", len(name)).raw(name)
    record.field("If9f16f", len(nodes), 1.5, 1, 2, 3, 90, -30, 0, 1, 1, 2, *IDENTITY)
    for kind, node in nodes:
        record.embed(Record().field("B", kind, counts=0).embed(node))
    return record


def texture(index, name, path):
    return chunk(b"TXTR", Record().field("Iii", index, len(name), len(path)).raw(name).raw(path))


def animation():
    record = Record().field("fii", 24, 1, 4, counts=8).raw(b"walk").field("Iii", 0x10100, 2, 3, counts=16).raw(b"arm")
    return chunk(b"ANIM", record.field("IfIf", 0, 0, 12, 90.5))


FULL_MESH = mesh(4, (0, 1, 2, 2, 1, 3), ((0, (2, 1, 2, 0, 1, 65535, 2)), (1, (1, 0, 0, 3, 0, 0, 0))), (1, 1, 1, 2))
BARE_MESH = mesh(3, (0, 1, 2))


def scene(*nodes, others=()):
    return container(b"FORM", b"QELF", HEADER, chunk(b"SGRP", group(b"root", *nodes)), *others)


def scenes():
    deep = group(b"leaf")
    for _ in range(6):
        deep = group(b"", (1, deep))
    textures = (texture(0, b"wood", b"maps\\wood.png"), texture(1, b"", b"b.png"))
    everything = scene(
        (1, group(b"arm", (3, light(b"sun", 1)), (3, light(b"", 2)))),
        (2, FULL_MESH),
        (2, BARE_MESH),
        (1, group(b"empty")),
        others=textures + (animation(), chunk(b"XTRA", b"odd")),
    )
    yield "everything", everything
    yield "empty", scene()
    yield "mesh", scene((2, BARE_MESH))
    yield "twins", scene((2, mesh(8, (0, 1, 2, 5, 6, 7))))
    yield "smooth", scene((2, mesh(3, (0, 1, 2, 2, 1, 0), (), (1, 0, 0, 1))))
    yield "light", scene((3, light(b"lamp", 2)))
    yield "deep", scene((1, deep))
    yield "sets", scene(*[(2, mesh(0, (), (), (1, 1, 1, 255)))] * 90)
    yield "beyond", scene((2, mesh(3, (0, 1, 3))))
    yield "start", scene((2, mesh(3, (0, 1, 2), ((2, (0,) * 7),))))
    yield "order", scene((2, mesh(3, (0, 1, 2) * 2, ((1, (0,) * 7), (0, (0,) * 7)))))
    yield "pair", container(b"CAT ", b"QELF", scene(), scene((2, BARE_MESH)))


def trees():
    data = chunk(b"DATA", b"abc")
    form = container(b"FORM", b"TEST", data, chunk(b"TEXT", b"Hi"), data)
    yield "raw", data
    yield "form", form
    yield "cat", container(b"CAT ", b"TEST", form, form)
    yield "mixed", container(b"CAT ", b"JJJJ", form, container(b"CAT ", b"TEST", form))
    prop = container(b"PROP", b"TEST", chunk(b"DATA", b""))
    yield "list", container(b"LIST", b"TEST", prop, form, container(b"FORM", b"TEST"))
    yield "nested", container(b"FORM", b"TEST", form, container(b"LIST", b"TEST", prop, form))
    yield "trailing", Record(form.data + b"more")


# ---- Images: those that tests/host/images has not, faulty ones above all ----------------------------------


def tga(kind, bits, layout, pixels, width=3, height=2):
    mapped = kind % 8 == 1
    head = struct.pack("<BBBHHB4xHHBB", 2, mapped, kind, 10 * mapped, 4 * mapped, 24 * mapped, width, height, bits, layout)
    return Record(head + b"hi" + (bytes(range(12)) if mapped else b"") + pixels)


def bmp(width, height, bits, coding, colours, table, pixels):
    start = 54 + len(table)
    sizes = (start + len(pixels), start, 40, width, height, 1, bits, coding, 0, colours, 0)
    return Record(b"BM" + struct.pack("<I4xIIiiHHII8xII", *sizes) + table + pixels)


def png(bits, kind, rows, *others, width=3, height=2, interlaced=0):
    head = struct.pack(">2I5B", width, height, bits, kind, 0, 0, interlaced)
    parts = ((b"IHDR", head), *others, (b"IDAT", zlib.compress(rows, 9)), (b"IEND", b""))
    file = b"\x89PNG\r\n\x1a\n"
    for name, content in parts:
        file += struct.pack(">I", len(content)) + name + content + struct.pack(">I", zlib.crc32(name + content))
    return Record(file)


def pngs():
    ramp = bytes(range(64))
    palette = (b"PLTE", ramp[:9])
    yield "grey1.png", png(1, 0, b"\0\xa0\0\x40")
    yield "grey16.png", png(16, 0, (b"\1" + ramp[:6]) * 2, (b"tRNS", b"\2\3"))
    yield "colour.png", png(8, 2, (b"\2" + ramp[:9]) * 2, (b"tRNS", bytes((0, 0, 0, 1, 0, 2))))
    yield "mapped.png", png(2, 3, b"\0\x18\0\x20", palette, (b"tRNS", b"\1\2"))
    yield "beyond.png", png(2, 3, b"\0\xff\0\xff", palette)
    yield "alpha.png", png(8, 6, (b"\4" + ramp[:12]) * 2)
    yield "grey_alpha16.png", png(16, 4, (b"\3" + ramp[:12]) * 2)
    passes = b"".join(b"\0" + ramp[: 4 * columns] for columns in (1, 1, 2, 1, 1, 2, 2, 1, 1, 5, 5, 5))
    yield "interlaced.png", png(8, 6, passes, width=5, height=5, interlaced=1)
    yield "rows.png", png(8, 0, b"\0\1\2\3" * 9)
    # What a few kilobytes can ask for: texts of 84 MB, and 1024 x 1024 and 8192 x 8192 pixels.
    text = (b"iTXt", b"a\0\1\0\0\0" + zlib.compress(b"A" * 7000000, 9))
    yield "texts.png", png(8, 0, bytes(8), *[text] * 12)
    yield "large.png", png(1, 0, bytes(1024 * 129), width=1024, height=1024)
    yield "huge.png", png(1, 0, bytes(8192 * 1025), width=8192, height=8192)


def jpegs():
    folder = os.path.join(os.path.dirname(__file__), "../tests/host/images/flat")
    with open(os.path.join(folder, "progressive.jpg"), "rb") as file:
        data = file.read()
    head, scan = data[: data.rindex(b"\xff\xda")], data[data.rindex(b"\xff\xda") : -2]
    yield "scans.jpg", Record(head + scan * 60 + b"\xff\xd9")


def images():
    yield from pngs()
    yield from jpegs()
    ramp = bytes(range(24))
    yield "colour15.tga", tga(2, 15, 0, ramp[:12])
    yield "grey16.tga", tga(11, 16, 0x18, b"\x85ab")
    yield "beyond.tga", tga(1, 8, 0, bytes((10, 11, 12, 14, 9, 255)))
    yield "large.tga", tga(10, 32, 0, b"\xff\0\0\0\0" * 1024, 512, 256)
    yield "endless.tga", tga(10, 32, 0, b"\xff\0\0\0\0", 1024, 1024)
    yield "endless.bmp", bmp(1024, 1024, 8, 1, 2, bytes(range(8)), b"\0\2\xff\xff\1\1\0\1")
    yield "alpha.bmp", bmp(3, 2, 32, 6, 0, struct.pack("<4I", 0xFF0000, 0xFF00, 0xFF, 0xFF000000), ramp)


# ---- Models: lines, and the library behind "#mtl" ---------------------------------------------------------

LIBRARY = "\n#mtl\n# two\nnewmtl red\nKa .1 .2 .3\nKd 1 0 0\nKs 1 1 1\nNs 10\nd 0.5\nmap_Kd maps\\a.png\nnewmtl b\nKd 0 0 1\n"
SQUARE = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
MODELS = {
    "triangle": "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n",
    "square": SQUARE + "vt 0 0\nvt 1 0\nvt 1 1\nvn 0 0 1\nf 1/1/1 2/2/1 3/3/1 4/1/1\nf -4//-1 -3//1 -2//1\nf 1/1 2/2 3/3\n",
    "materials": "mtllib a.mtl\n" + SQUARE + "usemtl red\nf 1 2 3\nusemtl b\nf 1 3 4\nusemtl none\nf 2 3 4\nusemtl red" + LIBRARY,
    "numbers": "v 1e-3 -2.5E+10 .5\nv nan inf -inf\nv 1e39 1e-46 123456789012345678901234567890\nv 0x1p4 1. +3\nf 1 2 3\n",
    "lines": "v 1 2 \\\n3\r\nv  4 5\t6 \r\n\n# remark\nv 7 8 9\n\nf 1 \\\r\n2 3\n\n",
    "faults": "v 1\nvn 1 2\nvt 1\nf\nf 1\nf 1 2\nf 0 0 0\nf 9 9 9\nf 99999999999 -99999999999 1\nmtllib\nusemtl\nf 1/2/3/4 2 3 \\",
    # One past the end, where the arrays that hold them are full.
    "beyond": "v 0 0 1\n" * 5 + "vt 1 0\n" * 8 + "vn 0 0 1\n" * 5 + "f 1 2 6\nf 1/1 2/2 3/9\nf 1//1 2//2 3//6\nf 1 2 -6\n",
    "libraries": "mtllib a.mtl\n" * 300 + "usemtl red\n" * 300 + LIBRARY * 10,
    "names": "mtllib a.mtl\n" + "".join("usemtl m%d\n" % i for i in range(300)) + "\n#mtl\n"
    + "".join("newmtl m%d\nmap_Kd a\n" % i for i in range(300)),
    "long": "v " + "0" * 1030 + " 1 2\n# " + "x" * 1100 + "\nf" + " 1" * 520 + "\n",
}


def main():
    root = sys.argv[1]
    kinds = {
        "scene": scenes(),
        "iff": trees(),
        "picture": images(),
        "obj": ((name, Record(text.encode())) for name, text in MODELS.items()),
    }
    for kind, files in kinds.items():
        folder = os.path.join(root, kind)
        os.makedirs(folder, exist_ok=True)
        for name, record in files:
            with open(os.path.join(folder, name), "wb") as file:
                file.write(record.data)


if __name__ == "__main__":
    main()
