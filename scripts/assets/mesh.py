"""Meshes for the sample models: building, checking and writing OBJ and MTL files.

A Model collects faces by material in file order. Positions, texture coordinates and normals are
written with fixed decimals and are shared when the written text is equal, so a normal computed by
a loader that merges equal positions is smooth wherever two faces meet.
"""

import math
import os


def add(a, b):
    return (a[0] + b[0], a[1] + b[1], a[2] + b[2])


def sub(a, b):
    return (a[0] - b[0], a[1] - b[1], a[2] - b[2])


def scale(a, k):
    return (a[0] * k, a[1] * k, a[2] * k)


def dot(a, b):
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def length(a):
    return math.sqrt(dot(a, a))


def unit(a):
    n = length(a)
    return (a[0] / n, a[1] / n, a[2] / n)


def lerp(a, b, t):
    return tuple(x + (y - x) * t for x, y in zip(a, b))


class Frame:
    """A rigid placement: three orthonormal axes and an origin."""

    def __init__(self, origin=(0, 0, 0), x=(1, 0, 0), y=(0, 1, 0), z=(0, 0, 1)):
        self.origin, self.x, self.y, self.z = origin, x, y, z

    def turn(self, v):
        return tuple(self.x[i] * v[0] + self.y[i] * v[1] + self.z[i] * v[2] for i in range(3))

    def place(self, p):
        return add(self.origin, self.turn(p))


class Material:
    """One MTL record; `texture` is a file name beside the OBJ file."""

    def __init__(self, name, ka, kd, ks=(0, 0, 0), ns=1, d=1, texture=None, ke=(0, 0, 0)):
        self.name, self.ka, self.kd, self.ks, self.ns, self.d, self.texture = name, ka, kd, ks, ns, d, texture
        self.ke = ke  # scene files only

    def lines(self):
        def triple(key, c):
            return "%s %.4f %.4f %.4f" % ((key,) + tuple(c))

        out = ["newmtl " + self.name, triple("Ka", self.ka), triple("Kd", self.kd), triple("Ks", self.ks)]
        out += ["Ns %.2f" % self.ns, "d %.3f" % self.d, "illum 2"]
        if self.texture:
            out.append("map_Kd " + self.texture)
        return out


class Model:
    """Faces in the order in which they are drawn, grouped under object names and materials."""

    def __init__(self, name, smooth=True, relative=()):
        self.name = name
        self.write_normals = smooth  # False: no "vn" at all, the loader computes normals
        self.relative = set(relative)  # objects whose corners are written with negative indices
        self.materials = {}
        self.sections = []  # [object name, material name, faces]
        self.object_name = name

    def material(self, *args, **kwargs):
        m = Material(*args, **kwargs)
        self.materials[m.name] = m
        return m.name

    def object(self, name):
        self.object_name = name

    def face(self, material, positions, normals=None, uvs=None):
        """Adds a convex planar polygon, counter-clockwise seen from outside."""
        if not self.sections or self.sections[-1][:2] != [self.object_name, material]:
            self.sections.append([self.object_name, material, []])
        self.sections[-1][2].append((list(positions), normals and list(normals), uvs and list(uvs)))

    def grid(self, material, rows, flip=False):
        """Adds quads between rows of (position, normal, uv) samples; `flip` turns the winding.

        Quads that collapse to a line are left out, and those that collapse to a triangle at a pole
        become one.
        """
        for r0, r1 in zip(rows, rows[1:]):
            for i in range(len(r0) - 1):
                self.patch(material, [r0[i], r0[i + 1], r1[i + 1], r1[i]], flip)

    def patch(self, material, corners, flip=False):
        kept = []
        for c in corners:
            if not kept or text(c[0]) != text(kept[-1][0]):
                kept.append(c)
        if len(kept) > 1 and text(kept[0][0]) == text(kept[-1][0]):
            kept.pop()
        if len(kept) < 3 or area(kept[0][0], kept[1][0], kept[-1][0]) < 1e-9:
            return
        if flip:
            kept.reverse()
        normals = [c[1] for c in kept] if kept[0][1] is not None else None
        uvs = [c[2] for c in kept] if kept[0][2] is not None else None
        self.face(material, [c[0] for c in kept], normals, uvs)

    def recentre(self):
        """Moves the model so that a small sphere about the origin holds it; returns its radius."""
        points = [p for _, _, faces in self.sections for f in faces for p in f[0]]
        centre = tuple((min(p[i] for p in points) + max(p[i] for p in points)) / 2 for i in range(3))
        step = 0.25
        for _ in range(400):  # walk towards the farthest point with shrinking steps
            far = max(points, key=lambda p: length(sub(p, centre)))
            centre = lerp(centre, far, step * 0.05)
            step *= 0.98
        for section in self.sections:
            section[2] = [([sub(p, centre) for p in f[0]], f[1], f[2]) for f in section[2]]
        return max(length(sub(p, centre)) for p in points)

    def check(self):
        """Refuses faces that are degenerate, not convex, not planar or wound against their normals."""
        for name, _, faces in self.sections:
            for positions, normals, _ in faces:
                whole = (0, 0, 0)
                for i in range(1, len(positions) - 1):
                    whole = add(whole, cross(sub(positions[i], positions[0]), sub(positions[i + 1], positions[0])))
                assert length(whole) > 1e-10, (name, "degenerate", positions)
                up = unit(whole)
                for i, p in enumerate(positions):
                    after, before = positions[(i + 1) % len(positions)], positions[i - 1]
                    turn = dot(cross(sub(after, p), sub(before, p)), up)
                    assert turn > -1e-6, (name, "not convex", positions)
                    if len(positions) > 4:
                        assert abs(dot(sub(p, positions[0]), up)) < 2e-4, (name, "not planar", positions)
                for n in normals or ():
                    assert abs(length(n) - 1) < 1e-6, (name, "normal is not a unit vector", n)
                if normals:
                    mean = (0, 0, 0)
                    for n in normals:
                        mean = add(mean, n)
                    assert dot(mean, up) > 0, (name, "winding against the normals", positions, normals)

    def triangles(self):
        return sum(len(f[0]) - 2 for _, _, faces in self.sections for f in faces)

    def save(self, folder):
        self.check()
        os.makedirs(folder, exist_ok=True)
        mtl = ["# Materials of %s, written by scripts/make-assets.py" % self.name]
        for m in self.materials.values():
            mtl += [""] + m.lines()
        write_lines(os.path.join(folder, self.name + ".mtl"), mtl)
        write_lines(os.path.join(folder, self.name + ".obj"), self.obj_lines())

    def obj_lines(self):
        out = ["# %s, written by scripts/make-assets.py" % self.name, "mtllib %s.mtl" % self.name]
        tables = {"v": {}, "vt": {}, "vn": {}}
        previous = None
        for name, material, faces in self.sections:
            if name != previous:
                out.append("o " + name)
                previous = name
            lines = []
            for positions, normals, uvs in faces:
                corners = []
                for i, p in enumerate(positions):
                    index = [intern(tables["v"], out, "v ", text(p)), None, None]
                    if uvs:
                        index[1] = intern(tables["vt"], out, "vt ", text(uvs[i]))
                    if normals and self.write_normals:
                        index[2] = intern(tables["vn"], out, "vn ", text(normals[i], 3))
                    corners.append(index)
                lines.append(corners)
            out.append("usemtl " + material)
            totals = [len(tables[k]) for k in ("v", "vt", "vn")]
            for corners in lines:
                if name in self.relative:
                    corners = [[c and c - total - 1 for c, total in zip(corner, totals)] for corner in corners]
                out.append("f " + " ".join(corner_text(*corner) for corner in corners))
        return out


def area(a, b, c):
    return length(cross(sub(b, a), sub(c, a)))


def text(values, decimals=4):
    return " ".join("%.*f" % (decimals, v + 0.0 if abs(v) > 0.5 * 10**-decimals else 0.0) for v in values)


def intern(table, out, key, value):
    """The one-based index of a value; a new one is written down at once, before the faces using it."""
    if value not in table:
        table[value] = len(table) + 1
        out.append(key + value)
    return table[value]


def corner_text(position, uv, normal):
    if normal is None:
        return "%d" % position if uv is None else "%d/%d" % (position, uv)
    return "%d/%s/%d" % (position, "" if uv is None else uv, normal)


def write_lines(path, lines):
    data = ("\n".join(lines) + "\n").encode("ascii")
    assert all(len(line) < 1021 for line in lines), path
    with open(path, "wb") as f:
        f.write(data)
