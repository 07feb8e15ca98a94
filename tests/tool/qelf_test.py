"""Runs the built qelf on scene files that this test writes byte by byte."""

import json
import os
import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).parents[2] / "fuzz"))
from make_seeds import IDENTITY, Record, chunk, container

QELF = os.environ["QELF_TOOL"]
TOOL = os.environ["MODEL3D_TOOL"]

def material(diffuse_map=0):
    return Record().field("15f7H", *[0.5] * 12, 10, 1, 0, diffuse_map, 0, 0, 0, 0, 0, 0)


def mesh(vertices, faces, materials=()):
    counts = len(vertices), len(faces), len(materials)
    record = Record().field("3i4B16f", *counts, 0, 0, 0, 0, *IDENTITY, counts=74)
    for start, m in materials:
        record.field("I", start).embed(m)
    record.raw(b"".join(struct.pack("<3f", *v) for v in vertices))
    return record.raw(b"".join(struct.pack("<3I", *f) for f in faces))


def group(name, nodes, radius=1.0):
    record = Record().field("i", len(name)).raw(name)
    record.field("If9f16f", len(nodes), radius, *[0] * 6, 1, 1, 1, *IDENTITY)
    for kind, node in nodes:
        record.embed(Record().field("B", kind, counts=0).embed(node))
    return record


def texture(path):
    return Record().field("Iii", 0, 0, len(path)).raw(b"").raw(path)


def scene(*chunks, version=(2, 0)):
    header = chunk(b"SHDR", struct.pack(">2H", *version))
    return container(b"FORM", b"QELF", header, *(chunk(*c) for c in chunks)).data


TRIANGLE = mesh([(0, 0, 0), (1, 0, 0), (0, 1, 0)], [(0, 1, 2)], [(0, material())])
GOOD = scene((b"SGRP", group(b"root", [(1, group(b"arm", [(2, TRIANGLE)]))])))


class QelfTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.write("good.qel", GOOD)

    def write(self, name, data):
        (self.folder / name).write_bytes(data)

    def run_tool(self, *args, code=0, tool=QELF):
        done = subprocess.run([tool, *args], cwd=self.folder, capture_output=True, timeout=60)
        self.assertEqual(done.returncode, code, f"{args}: {done.stderr.decode()}")
        return done.stdout.decode(), done.stderr.decode()

    def test_check_names_place_and_cause(self):
        self.run_tool("check", "good.qel")
        vertices = [(0, 0, 0), (1, 0, 0), (0, 1, 0)]
        two = [(0, 1, 2), (0, 1, 2)]
        in_root = lambda m: scene((b"SGRP", group(b"root", [(2, m)])))
        bad_face = in_root(mesh(vertices, [(0, 1, 3)]))
        cases = {
            "version": (scene((b"SGRP", group(b"", [])), version=(2, 1)), ["QELF/SHDR[0]", "byte 20", "2.1"]),
            "no group": (scene(), ["no scene group"]),
            "index": (bad_face, ["node[0]/INDX", f"byte {len(bad_face) - 4}", "vertex index 3", "3 vertices"]),
            "not finite": (in_root(mesh([(0, float("nan"), 0)] * 3, [(0, 1, 2)])), ["VRTX", "vertex 0", "2 more"]),
            "order": (in_root(mesh(vertices, two, [(1, material()), (0, material())])),
                      ["material[1]", "start index 0 is below 1"]),
            "start": (in_root(mesh(vertices, two, [(3, material())])), ["start index 3 is beyond the 2 faces"]),
            "number": (in_root(mesh(vertices, two, [(0, material(1))])), ["texture number 1", "0 textures"]),
            "file": (scene((b"SGRP", group(b"", [])), (b"TXTR", texture(b"none.png"))), ["TXTR[0]", "no file none.png"]),
            "radius": (scene((b"SGRP", group(b"ab", [], float("inf")))), ["radius is not finite", "byte 42"]),
            "cut": (GOOD[:-1], ["INDX", f"byte {len(GOOD) - 1}"]),
            "size": (GOOD[:4] + struct.pack(">i", 600) + GOOD[8:], ["chunkId"]),
            "type": (scene((b"SGRP", group(b"", [(4, Record())]))), ["Error while reading chunk!"]),
            "other": (b"RIFF" + struct.pack(">i", 4) + b"WAVE", ["Not a valid IFF-85 file"]),
            "empty": (b"", ["cannot open main chunk"]),
        }
        for name, (data, facts) in cases.items():
            with self.subTest(name):
                self.write("bad.qel", data)
                out, errors = self.run_tool("check", "bad.qel", "--json", code=1)
                for fact in facts:
                    self.assertIn(fact, errors)
                report = json.loads(out)
                self.assertFalse(report["valid"])
                self.assertEqual(len(report["findings"]), len(errors.splitlines()))
        self.write("bad.qel", scene((b"SGRP", group(b"g", [(2, mesh(vertices, [(9, 0, 0)], [(5, material(2))]))]))))
        self.assertEqual(len(self.run_tool("check", "bad.qel", code=1)[1].splitlines()), 3)  # every finding

    def test_compare_names_the_first_difference(self):
        self.run_tool("compare", "good.qel", "good.qel")
        moved = mesh([(0, 0, 0), (1, 0, 0), (0, 2, 0)], [(0, 1, 2)], [(0, material())])
        cases = {
            "vertex": (scene((b"SGRP", group(b"root", [(1, group(b"arm", [(2, moved)]))]))),
                       '"arm"/node[0]/VRTX[7]: 1 (bits 0x3f800000) against 2'),
            "name": (scene((b"SGRP", group(b"root", [(1, group(b"leg", [(2, TRIANGLE)]))]))), "leg"),
            "more": (scene((b"SGRP", group(b"root", [(1, group(b"arm", [(2, TRIANGLE)]))])), (b"TXTR", texture(b"a"))),
                     "only the second has QELF/TXTR[0]"),
        }
        for name, (data, fact) in cases.items():
            with self.subTest(name):
                self.write("other.qel", data)
                self.assertIn(fact, self.run_tool("compare", "good.qel", "other.qel", code=1)[0])

    def test_info_tells_keys_counts_and_duplicates(self):
        facts = json.loads(self.run_tool("info", "good.qel", "--json")[0])
        self.assertEqual((facts["groups"], facts["meshes"], facts["vertices"], facts["triangles"]), (2, 1, 3, 1))
        self.assertEqual((facts["bytes"], facts["array_bytes"]), (len(GOOD), 48))
        self.assertEqual(facts["nodes"][1]["data_keys"], [f"arm_{k}{a}" for k in "RTS" for a in "XYZ"])
        self.write("twice.qel", scene((b"SGRP", group(b"a", [(1, group(b"b", [])), (1, group(b"b", []))]))))
        out, errors = self.run_tool("info", "twice.qel")
        self.assertIn('2 groups are named "b"', errors)
        self.assertIn("b_RX", out)

    def test_convert(self):
        self.run_tool("convert", "good.qel", "copy.qel")
        self.assertEqual((self.folder / "copy.qel").read_bytes(), GOOD)

        (self.folder / "tex").mkdir()
        (self.folder / "out").mkdir()
        self.write("tex/a.png", b"")
        self.write("m.mtl", b"newmtl a\nmap_Kd tex/a.png\nnewmtl b\nmap_Kd tex/../tex/a.png\n")
        squares = b"".join(b"v %d %d %d\n" % (x, y, z) for z in (0, 1) for x, y in ((0, 0), (1, 0), (1, 1), (0, 1)))
        self.write("m.obj", b"mtllib m.mtl\n" + squares + b"usemtl a\nf 1 2 3 4\nusemtl b\nf 5 6 7 8\n")
        for weld, vertices, notice in ([], 10, ""), (["--weld"], 8, "saved 2 vertices"):
            errors = self.run_tool("convert", "m.obj", "out/m.qel", *weld)[1]
            self.assertIn(notice, errors)
            self.run_tool("check", "out/m.qel")
            facts = json.loads(self.run_tool("info", "out/m.qel", "--json")[0])
            self.assertEqual((facts["vertices"], facts["triangles"], facts["materials"]), (vertices, 4, 2))
            self.assertEqual([t["path"] for t in facts["textures"]], ["../tex/a.png"])  # one file, one number
            self.assertTrue(facts["nodes"][1]["normals"])
        model = json.loads(self.run_tool("info", "out/m.qel", "--json", tool=TOOL)[0])
        self.assertEqual(model["radius"], json.loads(self.run_tool("info", "m.obj", "--json", tool=TOOL)[0])["radius"])
        self.assertEqual([s["faces"] for s in model["meshes"][0]["segments"]], [2, 2])

    def test_wrong_use_has_its_codes_and_writes_nothing(self):
        before = sorted(self.folder.iterdir())
        self.write("cut.qel", GOOD[:-1])
        for code, *args in ((2,), (2, "check"), (2, "check", "none.qel"), (2, "print", "."), (2, "info", "none.qel"),
                            (2, "compare", "good.qel", "none.qel"), (1, "print", "cut.qel"),
                            (1, "convert", "cut.qel", "new.qel"), (1, "convert", "good.qel", "none/new.qel"),
                            (1, "convert", "good.txt", "new.qel"), (1, "convert", "none.obj", "new.qel")):
            with self.subTest(args):
                self.assertTrue(self.run_tool(*args, code=code)[1])
        (self.folder / "cut.qel").unlink()
        self.assertEqual(sorted(self.folder.iterdir()), before)


if __name__ == "__main__":
    unittest.main()
