"""Runs the built qelf on scene files that this test writes byte by byte."""

import json
import os
import resource
import struct
import sys
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).parents[2] / "fuzz"))
from make_seeds import IDENTITY, Record, chunk, container
from tool_case import ToolCase

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


class QelfTest(ToolCase):
    tool = os.environ["QELF_TOOL"]

    def setUp(self):
        super().setUp()
        self.write("good.qel", GOOD)

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

        # A scene keeps its images wherever it goes.
        self.run_tool("convert", "out/m.qel", "m.qel")
        self.assertIn("texture 1: tex/a.png\n", self.run_tool("info", "m.qel")[0])
        self.run_tool("check", "m.qel")
        for args in ("m.obj", "m.obj"), ("m.obj", "m.mtl"), ("m.obj", "tex/a.png"), ("m.qel", "m.qel"), ("m.qel", "tex/a.png"):
            self.assertIn("would replace", self.run_tool("convert", *args, code=2)[1])

    def test_check_finds_the_images_that_the_loader_finds(self):
        os.mkdir(self.folder / "tex")
        self.write("tex/a.png", b"")
        for path, found in (("tex/a.png", True), ("tex\\a.png", True), ("/tex/a.png", True),
                            (f"{self.folder}/tex/a.png", False), ("tex", False), ("", False)):
            self.write("t.qel", scene((b"SGRP", group(b"", [(2, mesh([(0, 0, 0)] * 3, [(0, 1, 2)], [(0, material(1))]))])),
                                      (b"TXTR", texture(path.encode()))))
            loaded = json.loads(self.run_tool("info", "t.qel", "--json", tool=TOOL)[0])["textures"]
            self.assertEqual([t["found"] for t in loaded], [found], path)
            self.run_tool("check", "t.qel", code=0 if found else 1)

    def test_output_is_written_whole_or_not_at_all(self):
        self.write("out.qel", b"earlier")
        (self.folder / "out.qel").chmod(0o640)
        before = sorted(self.folder.iterdir())
        small = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (9, 9))
        self.assertIn("File too large", self.run_tool("convert", "good.qel", "out.qel", code=1, preexec_fn=small)[1])
        self.assertEqual((self.folder / "out.qel").read_bytes(), b"earlier")
        self.assertEqual(sorted(self.folder.iterdir()), before)
        self.run_tool("convert", "good.qel", "out.qel",
                      preexec_fn=lambda: open(self.folder / f".model3d-{os.getpid()}.part", "w").close())
        self.assertEqual((self.folder / "out.qel").read_bytes(), GOOD)
        self.assertEqual((self.folder / "out.qel").stat().st_mode & 0o777, 0o640)
        self.assert_full_disks_are_noticed("--help", "check --help", "--version", "print good.qel", "info good.qel")

    def test_wrong_use_has_its_codes_and_writes_nothing(self):
        self.write("cut.qel", GOOD[:-1])
        self.write("other.qel", container(b"FORM", b"ILBM").data)
        self.write("zeros.qel", b"")
        os.truncate(self.folder / "zeros.qel", 5 << 30)
        (self.folder / "zero.qel").symlink_to("/dev/zero")
        os.mkfifo(self.folder / "pipe.qel")
        before = sorted(self.folder.iterdir())
        self.assertIn("Usage: qelf", self.run_tool(code=2)[1])
        self.assert_failures(
            (2, "check", "FILE is required"),
            (2, "print .", "is a directory"),
            *((2, command, "none.qel: No such file") for command in ("check none.qel", "info none.qel")),
            (2, "compare good.qel none.qel", "none.qel: No such file"),
            *((1, command, "cut.qel: cannot be read") for command in ("print cut.qel", "convert cut.qel new.qel")),
            (1, "convert good.qel none/new.qel", "none/new.qel: cannot be written"),
            (1, "convert good.qel /dev/full", "/dev/full: ", "No space left"),
            (1, "convert good.txt new.qel", "good.txt: neither an .obj nor a .qel file"),
            (1, "convert none.obj new.qel", "none.obj: No such file"),
            (1, "convert other.qel new.qel", "other.qel: is no scene"),
            (1, "convert zeros.qel new.qel", "zeros.qel: cannot be read"),
            *((1, f"convert {name}.qel new.qel", "is not a regular file") for name in ("zero", "pipe")),
            *((2, f"{command} pipe.qel", "pipe.qel: is not a regular file")
              for command in ("print", "check", "info", "compare good.qel")))
        self.assertEqual(sorted(self.folder.iterdir()), before)


if __name__ == "__main__":
    unittest.main()
