"""Runs the built model3d on small models: exit codes, messages, facts and pictures."""

import json
import os
import re
import struct
import subprocess
import unittest
import zlib
from pathlib import Path

from tool_case import ToolCase

ROOT = Path(__file__).parents[2]
FAILING_PLUGIN = os.environ["FAILING_PLUGIN"]

# A rectangle from (-1, -1) to (0.5, 1), so that no turn or flip looks like another.
QUAD = """mtllib quad.mtl
v -1 -1 0
v 0.5 -1 0
v 0.5 1 0
v -1 1 0
vt 0 0
vt 1 0.25
usemtl paint
f 1/1 2/2 3/1 4/2
"""
QUAD_MTL = "newmtl paint\nKa 0.5 0.5 0\nKd 0.25 0.5 1\nNs 12.5\nd 0.5\n"

# Seen by a camera at z = 2 with 90 degrees the picture is 4 units wide: 16 of 64 pixels a unit.
VIEW = ["--raw", "--samples", "1", "--size", "64x64", "--background", "102030", "--set", "shading_model=flat",
        "--set", "camera_position_z=2", "--set", "camera_field_of_view=90"]
BACK = (0x10, 0x20, 0x30, 255)

OCTAHEDRON = "".join(f"v {' '.join(str(s * (i == k)) for k in range(3))}\n" for i in range(3) for s in (1, -1)) + \
    "".join(f"f {x} {y} {z}\n" for x in (1, 2) for y in (3, 4) for z in (5, 6))


def f32(values):
    return struct.pack(f"<{len(values)}f", *values)


def read_png(data):
    """Returns rows from the top, each a list of (r, g, b, a). The tool filters nothing, which would take it time."""
    assert data[:8] == b"\x89PNG\r\n\x1a\n", "not a PNG"
    at, chunks = 8, {}
    while at < len(data):
        (length,) = struct.unpack_from(">I", data, at)
        kind, body = data[at + 4 : at + 8], data[at + 8 : at + 8 + length]
        assert struct.unpack_from(">I", data, at + 8 + length)[0] == zlib.crc32(kind + body)
        chunks[kind] = chunks.get(kind, b"") + body
        at += 12 + length
    width, height, *form = struct.unpack(">IIBBBBB", chunks[b"IHDR"])
    assert kind == b"IEND" and form == [8, 6, 0, 0, 0], "not 8-bit RGBA"
    raw, stride = zlib.decompress(chunks[b"IDAT"]), 4 * width + 1
    assert len(raw) == stride * height and not any(raw[::stride]), "filtered"
    return [[tuple(raw[x : x + 4]) for x in range(y * stride + 1, (y + 1) * stride, 4)] for y in range(height)]


class ToolTest(ToolCase):
    tool = os.environ["MODEL3D_TOOL"]

    def setUp(self):
        super().setUp()
        for name, text in {"quad.obj": QUAD, "quad.mtl": QUAD_MTL, "octahedron.obj": OCTAHEDRON,
                           "broken.obj": "mtllib none.mtl\nmtllib tex.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\n"
                                         "usemtl wood\nf 1 2 3\n",
                           "tex.mtl": "newmtl wood\nmap_Kd wood.png\n", "empty.obj": "", "model.stl": "solid\n",
                           "scene.qel": "FORM", "points.obj": "v 1 2 2\n"}.items():
            self.write(name, text.encode())
        (self.folder / "folder.obj").mkdir()

    def info(self, name):
        return json.loads(self.run_tool("info", name, "--json")[0])

    def picture(self, *args, file="quad.obj", view=VIEW):
        self.run_tool("render", file, "-o", "out.png", *view, *args)
        return read_png((self.folder / "out.png").read_bytes())

    def assert_same_picture(self, got, want):
        """Says where the first difference is; unittest's own report of long lists takes minutes."""
        self.assertEqual((len(got), len(got[0])), (len(want), len(want[0])))
        different = [(x, y) for y, row in enumerate(got) for x, pixel in enumerate(row) if pixel != want[y][x]]
        if different:
            x, y = different[0]
            self.fail(f"{len(different)} pixels differ, first x={x} y={y}: {got[y][x]}, wanted {want[y][x]}")

    def test_info_tells_what_the_loader_built(self):
        facts = self.info("quad.obj")
        self.assertEqual(list(facts), ["file", "format", "radius", "meshes", "groups", "lights", "textures",
                                       "missing"])
        # A fan of two triangles: the first corner is shared, every other one stands twice.
        corners = [(-1, -1, 0), (0.5, -1, 0), (0.5, 1, 0), (0.5, 1, 0), (-1, 1, 0)]
        texcoords = [(0, 1), (1, 0.75), (0, 1), (0, 1), (1, 0.75)]
        crc = lambda data: f"{zlib.crc32(data):08x}"
        self.assertEqual(facts, {
            "file": "quad.obj", "format": "obj", "radius": 1.4142135,  # the shortest for sqrt(2) in single precision
            "meshes": [{
                "name": "quad.obj", "nvertices": 5, "nfaces": 2, "use_normals": 1, "normals_given": False,
                "use_textures": 1, "position_sum": [-0.5, 1, 0], "texcoord_sum": [2, 4.5],
                "crc32": {"vertices": crc(f32(sum(corners, ()))), "normals": crc(bytes(60)),
                          "texcoords": crc(f32(sum(texcoords, ()))),
                          "indices": crc(struct.pack("<6I", 0, 1, 2, 0, 3, 4))},
                "segments": [{"material": "paint", "start_index": 0, "faces": 2, "ambient": [0.5, 0.5, 0],
                              "diffuse": [0.25, 0.5, 1], "specular": [1, 1, 1], "spec_exp": 12.5, "alpha": 0.5,
                              "diffuse_map": None}]}],
            "groups": [], "lights": [], "textures": [], "missing": []})

        text = self.run_tool("info", "quad.obj")[0]
        for fact in ("quad.obj", "5, sum -0.5", "computed when drawn", '"paint"', "exponent 12.5"):
            self.assertIn(fact, text)
        self.write("odd.obj", b"v inf 0 0\nv 1 0 0\nv 0 1 0\nvn 0 0 1\nf 1//1 2//1 3//1\n")
        odd = self.info("odd.obj")
        self.assertIsNone(odd["radius"])
        self.assertIsNone(odd["meshes"][0]["position_sum"][0])
        self.assertTrue(odd["meshes"][0]["normals_given"])

    def test_missing_files_are_named_once(self):
        facts = self.info("broken.obj")
        self.assertEqual([(m["kind"], m["name"]) for m in facts["missing"]],
                         [("library", ".//none.mtl"), ("texture", ".//wood.png")])
        self.assertEqual(facts["textures"], [{"path": ".//wood.png", "found": False}])
        errors = self.run_tool("render", "broken.obj", "-o", "out.png")[1]
        for what in ('material library ".//none.mtl"', 'texture ".//wood.png"'):
            self.assertEqual(errors.count(f"not found: {what} (tried "), 1, errors)

        # Bytes that are no PNG: the file is there, the picture is not.
        self.write("wood.png", b"no PNG")
        self.assertEqual(self.info("broken.obj")["textures"], [{"path": ".//wood.png", "found": True}])
        self.assertIn('not found: texture ".//wood.png"', self.run_tool("render", "broken.obj", "-o", "o.png")[1])
        # 2 MiB of black.
        bmp = struct.pack("<2s8x4I2H", b"BM", 62, 40, 1024, 512, 1, 1) + bytes(32 + 1024 * 512 // 8)
        self.write("wood.png", bmp)
        for option, limit in (("--image-limit", "image limit"), ("--image-budget", "control's image budget")):
            errors = [self.run_tool("render", "broken.obj", "-o", "o.png", option, mib)[1] for mib in ("1", "2")]
            self.assertIn(f"{limit} of 1 MiB (see {option})", errors[0])
            self.assertNotIn("texture", errors[1])

    def test_wrong_input_gets_one_line_and_its_code(self):
        draw = "render quad.obj -o out.png"
        self.assert_failures(
            (1, "render none.obj -o out.png", "none.obj: No such file"),
            (1, "render folder.obj -o out.png", "folder.obj: is a directory"),
            (1, "render empty.obj -o out.png", "empty.obj: the file is empty"),
            (1, "render model.stl -o out.png", "model.stl: unsupported format", ".obj"),
            (1, "render quad.obj -o none/out.png", "none/out.png: ", "No such file"),
            (1, "render quad.obj -o /dev/full", "/dev/full: ", "No space left"),
            *((1, f"info {name}", name) for name in ("none.obj", "folder.obj", "empty.obj", "model.stl")),
            (2, "render quad.obj", "--output is required"),
            (2, "render -o out.png", "FILE is required"),
            (2, "info", "FILE is required"),
            (2, "info quad.obj --frames 1", "--frames"),
            (2, "draw", "subcommand"),
            (2, f"{draw} --set colour=1", "colour", "model3d attributes"),
            (2, f"{draw} --set azimuth=north", "azimuth", "north"),
            (2, f"{draw} --set alpha", "NAME=VALUE"),
            (2, f"{draw} --set filename=other.obj", "filename"),
            (2, f"{draw} --data door_RY=open", "open"),
            (2, f"{draw} --size 64", "64"),
            (2, f"{draw} --size 100000x10", "at most"),
            (2, f"{draw} --background 12345", "12345"),
            (2, f"{draw} --rotation 45", "45"),
            (2, f"{draw} --rotation 90 --surface", "--surface"),
            (2, f"{draw} --frames 0", "--frames"),
            (2, f"{draw} --image-limit 0", "--image-limit"),
            (2, f"{draw} --image-budget 4096", "--image-budget"),
            (2, "render quad.obj -o - --json", "--json"))
        self.assert_failures(*((1, command, "scene.qel: could not be loaded")  # after what the loader says
                               for command in ("info scene.qel", "render scene.qel -o out.png")), lines=2)
        self.assertIn("Usage: model3d", self.run_tool(code=2)[1])
        if os.geteuid() != 0:
            (self.folder / "quad.obj").chmod(0)
            self.assert_failures((1, "info quad.obj", "Permission denied"))

    def test_no_input_is_replaced(self):
        self.write("wood.png", b"no PNG")
        os.link(self.folder / "tex.mtl", self.folder / "hard.png")
        (self.folder / "soft.png").symlink_to("wood.png")
        for out in (f"../{self.folder.name}/broken.obj", "tex.mtl", "wood.png", "hard.png", "soft.png"):
            before = (self.folder / out).read_bytes()
            self.assertIn(f"{out}: the output would replace", self.run_tool("render", "broken.obj", "-o", out, code=2)[1])
            self.assertEqual((self.folder / out).read_bytes(), before)

    def test_only_drawn_pictures_are_written_and_whole(self):
        before = set(os.listdir(self.folder))
        (self.folder / "out.png").write_text("earlier")
        self.run_tool("render", "quad.obj", "-o", "out.png", "--set", "azimuth=x", code=2)
        self.run_tool("render", "quad.obj", "-o", "out.png", env={"MODEL3D_PLUGIN": "none.so"}, code=1)
        drawn = [("warning", "other.png", 0, "only a warning"),
                 ("shader", "out.png", 1, "quad.obj: was not drawn: no shader today"),
                 ("load", "out.png", 1, "quad.obj: was not drawn: could not load model: it"),
                 ("gl", "out.png", 1, "quad.obj: was not drawn: GL error 0x0500")]
        for way, out, code, cause in drawn:
            errors = self.run_tool("render", "quad.obj", "-o", out, "--option", way, "--samples", "1", "--raw",
                                   env={"MODEL3D_PLUGIN": FAILING_PLUGIN}, code=code)[1]
            self.assertEqual(errors, f"model3d: {cause}\n")
        (self.folder / "other.png").unlink()
        self.assertEqual((self.folder / "out.png").read_text(), "earlier")
        self.assertEqual(set(os.listdir(self.folder)), before | {"out.png"})

        (self.folder / "link.png").symlink_to("out.png")
        self.run_tool("render", "quad.obj", "-o", "link.png", *VIEW)
        self.assertTrue((self.folder / "link.png").is_symlink())
        to_file = (self.folder / "out.png").read_bytes()
        to_output = self.run_tool("render", "quad.obj", "-o", "-", *VIEW)[0]
        self.assertEqual(to_output.encode(errors="surrogateescape"), to_file)
        os.mkfifo(self.folder / "pipe")
        with subprocess.Popen(["cat", self.folder / "pipe"], stdout=subprocess.PIPE) as reader:
            try:
                self.run_tool("render", "quad.obj", "-o", "pipe", *VIEW)
                self.assertEqual(reader.communicate(timeout=60)[0], to_file)
            finally:
                reader.kill()
        self.assert_full_disks_are_noticed("render quad.obj -o -", "info quad.obj --json", "info quad.obj", "attributes",
                                           "--help", "--version")
        self.assertIn("no triangles", self.run_tool("render", "points.obj", "-o", "out.png", *VIEW)[1])
        self.assertEqual(set(os.listdir(self.folder)), before | {"out.png", "link.png", "pipe"})

    def test_pictures_are_exact(self):
        (self.folder / "quad.mtl").write_text(QUAD_MTL.replace("d 0.5", "d 1"))
        paint = tuple(round(255 * 0.75 * kd) for kd in (0.25, 0.5, 1)) + (255,)
        plain = self.picture()
        self.assert_same_picture(plain, [[paint if 16 <= x < 40 and 16 <= y < 48 else BACK for x in range(64)]
                                         for y in range(64)])
        wide = self.picture("--size", "64x32")
        self.assertEqual((len(wide), len(wide[0])), (32, 64))
        self.assert_same_picture(self.picture("--frames", "2"), plain)

        turned_left = [list(row) for row in zip(*plain)][::-1]
        self.assert_same_picture(self.picture("--rotation", "270"), turned_left)
        oblong = self.picture("--rotation", "90", "--size", "64x32")
        self.assertEqual((len(oblong), len(oblong[0])), (64, 32))

        # A surface's viewport is one row short, so edges may move by a row; nothing else does.
        surface = self.picture("--surface")
        self.assertEqual(surface[63], [BACK] * 64)
        self.assertLessEqual(sum(a != b for a, b in zip(surface, plain)), 2)
        moved = self.picture("--set", "x=8", "--set", "y=-4")
        self.assert_same_picture([row[8:] for row in moved[:60]], [row[:56] for row in plain[4:]])

    def test_transparent_pictures_have_straight_alpha(self):
        paint = [round(255 * 0.75 * kd) for kd in (0.25, 0.5, 1)]
        raw = self.picture("--background", "80402080")
        self.assertEqual(raw[0][0], (0x80, 0x40, 0x20, 0x80))
        view = [arg for arg in VIEW if arg != "--raw"]
        clear = self.picture("--background", "80402000", view=view)
        self.assertEqual(clear[0][0][3], 0)
        for got, want in zip(clear[32][30], [*paint, 128]):
            self.assertAlmostEqual(got, want, delta=2)
        half = self.picture("--background", "#80402080", view=view)
        self.assertEqual(half[0][0], (0x80, 0x40, 0x20, 0x80))
        opaque = self.picture("--background", "804020", view=view)
        self.assertEqual(opaque[32][30][3], 255)
        for got, back, top in zip(opaque[32][30], (0x80, 0x40, 0x20), paint):
            self.assertAlmostEqual(got, (back + top) / 2, delta=1)

    def test_the_camera_frames_the_model(self):
        moved = ["model_position_x=40", "model_position_y=-7", "model_position_z=30"]
        turn = ["azimuth=50", "elevation=20"]
        for size, sets in [("96x96", []), ("96x40", []), ("40x96", []), ("96x96", moved), ("96x96", turn),
                           ("96x40", [*moved, *turn]), ("96x96", [*moved, *turn, "camera_mode=legacy"]),
                           ("96x96", [*moved, *turn, "camera_mode=fly"]),
                           ("96x96", ["camera_field_of_view=100", "azimuth=10"])]:
            with self.subTest(size=size, sets=sets):
                options = [o for s in sets for o in ("--set", s)]
                rows = self.picture("--size", size, "--samples", "1", "--background", "102030", *options,
                                    file="octahedron.obj", view=[])
                width, height = len(rows[0]), len(rows)
                seen = [(x, y) for y, row in enumerate(rows) for x, p in enumerate(row) if p != BACK]
                self.assertTrue(seen)
                (left, right), (top, bottom) = [(min(c), max(c)) for c in zip(*seen)]
                self.assertTrue(0 < left and right < width - 1 and 0 < top and bottom < height - 1)
                filled = max(right - left + 1, bottom - top + 1) / min(width, height)
                self.assertGreater(filled, 0.5 if "camera_field_of_view=100" in sets else 0.7)
                self.assertAlmostEqual(left + right, width - 1, delta=0.12 * width)

    def test_data_values_move_groups(self):
        robot = str(ROOT / "assets/robot/robot.qel")
        groups = {g["name"]: g["data_keys"] for g in self.info(robot)["groups"]}
        self.assertEqual(groups["elbow"], [f"elbow_{kind}{axis}" for kind in "RTS" for axis in "XYZ"])
        plain, moved, other = [self.picture("--size", "96x72", *data, file=robot, view=["--samples", "1"])
                               for data in ([], ["--data", "elbow_RZ=45"], ["--data", "ankle_RZ=45"])]
        self.assertTrue(plain != moved)
        self.assert_same_picture(other, plain)

    def test_json_tells_about_the_run(self):
        facts = json.loads(self.run_tool("render", "quad.obj", "-o", "out.png", "--json", "--size", "40x30",
                                         "--rotation", "270", "--frames", "3", "--samples", "1000")[0])
        self.assertEqual((facts["width"], facts["height"], facts["frames"]), (30, 40, 3))
        self.assertGreaterEqual(facts["samples"], 1)
        self.assertEqual({k: facts["model"][k] for k in ("vertices", "faces", "segments", "materials", "textures")},
                         {"vertices": 5, "faces": 2, "segments": 1, "materials": 1, "textures": 0})
        times = facts["timings"]
        self.assertEqual(times["model3d: load model"]["count"], 1)
        draw = times["model3d: render scene graph"]
        self.assertEqual(draw["count"], 3)
        self.assertTrue(0 < draw["min_us"] <= draw["total_us"] / 3 <= draw["max_us"])
        self.assertIn("OpenGL ES", facts["gl_version"])
        traced = self.run_tool("render", "quad.obj", "-o", "out.png", "--option", "diag=5")[1]
        self.assertIn("rendering to frame buffer", traced)
        self.assertEqual(self.run_tool("render", "quad.obj", "-o", "out.png")[1].count("rendering"), 0)

    def test_the_attribute_table_is_the_plugins(self):
        table = json.loads(self.run_tool("attributes", "--json")[0])
        self.assertEqual(self.run_tool("attributes")[0].count("\n"), len(table) + 1)

        # README names all that have an effect, the common ones in a sentence, then names, defaults and keywords.
        common, *lines = (ROOT / "README.md").read_text().split("## Control attributes")[1].split("## ")[0].split("\n| ")
        said = []
        for names, values, defaults in (line.split(" | ")[:3] for line in lines[1:]):
            names, defaults = re.findall("`(.*?)`", names), defaults.replace("`", "").split(", ")
            for i, name in enumerate(names):
                full = name if i == 0 or name[0] != "_" else names[0].rpartition("_")[0] + name
                said.append((full, re.findall("`(.*?)`", values), defaults[min(i, len(defaults) - 1)]))
        self.assertEqual(sorted(said), sorted((row["name"], row["values"], row["default"] or "none") for row in table[12:]))
        self.assertEqual(re.findall("`(.*?)`", common), [row["name"] for row in table[:12] if row["has_effect"]])

        # Every default is a value of its attribute, and the plug-in's own default.
        sets = [f"{row['name']}={row['default']}" for row in table
                if row["default"]]
        gouraud = ["--raw", "--samples", "1", "--size", "64x64", "--set", "model_position_z=-2"]
        plain = self.picture(view=gouraud)
        defaults = [o for s in sets if not s.startswith("model_position_z") for o in ("--set", s)]
        self.assert_same_picture(self.picture(*defaults, view=gouraud), plain)
        for row in table:
            if row["type"] != "text":
                self.run_tool("render", "quad.obj", "-o", "out.png", "--set", f"{row['name']}=1x", code=2)
        keyword = self.run_tool("render", "quad.obj", "-o", "out.png", "--set", "shading_model=Flat")[1]
        self.assertIn("blinn-phong", keyword)

    def test_without_gl_only_drawing_fails(self):
        for name in ("libEGL.so.1", "libGLESv2.so.2"):
            (self.folder / name).write_text("not a library")
        env = {"LD_LIBRARY_PATH": str(self.folder)}
        self.run_tool("info", "quad.obj", env=env)
        self.assertRegex(self.run_tool("attributes", env=env, code=1)[1], r"^model3d: .*libGLESv2\.so\.2.*\n$")
        errors = self.run_tool("render", "quad.obj", "-o", "out.png", env=env, code=1)[1]
        self.assertIn("libEGL.so.1", errors)
        self.assertFalse((self.folder / "out.png").exists())
        for args in (["--help"], ["render", "--help"], ["info", "--help"], ["attributes", "--help"]):
            self.assertIn("Example:\n  model3d ", self.run_tool(*args, env=env)[0])
        self.assertRegex(self.run_tool("--version", env=env)[0], r"^model3d \d+\.\d+\.\d+\n$")


if __name__ == "__main__":
    unittest.main()
