"""Scenes: named groups with meshes and lights below them, packed for a scene file."""

import os
import struct

from assets import scenelib
from assets.mesh import Model, length


class Light:
    def __init__(self, name, kind, color, intensity):
        self.name, self.kind, self.color, self.intensity = name, kind, color, intensity


class Group:
    """A group: its children are groups, lights and models, in the order in which they are drawn.

    Angles in degrees. A point is turned about z, then y, then x, and then moved.
    `reach` is how far the group may stretch under the movements it is meant for; else as it stands.
    """

    def __init__(self, name, translation=(0, 0, 0), rotation=(0, 0, 0), reach=None):
        self.name, self.translation, self.rotation, self.reach = name, translation, rotation, reach
        self.children = []

    def add(self, child):
        self.children.append(child)
        return child

    def model(self, materials):
        """A new model in this group; its normals are those it is given."""
        model = self.add(Model(self.name))
        model.materials = materials
        return model

    def group(self, *args, **kwargs):
        return self.add(Group(*args, **kwargs))

    def radius(self):
        """No point below is farther from the group's origin, however the groups below are turned."""
        if self.reach is not None:
            return self.reach
        out = 0.0
        for child in self.children:
            if isinstance(child, Group):
                out = max(out, length(child.translation) + child.radius())
            elif isinstance(child, Model):
                out = max([out] + [length(p) for _, _, faces in child.sections for f in faces for p in f[0]])
        return round(out, 4)


def pack(model, textured):
    """(vertices, normals, texcoords, indices, [(first face, material name)]) of the faces with or without texture.

    Corners are shared where everything rounded is equal; rounding hides the last bits of sines.
    """
    table, vertices, normals, texcoords, faces = {}, [], [], [], {}
    for _, material, section in model.sections:
        if bool(model.materials[material].texture) != textured:
            continue
        out = faces.setdefault(material, [])
        for positions, face_normals, uvs in section:
            corners = []
            for i, p in enumerate(positions):
                key = tuple(round(v, 5) + 0.0 for v in p)
                key += tuple(round(v, 4) + 0.0 for v in face_normals[i])
                if textured:  # v = 0 is the image's first row
                    key += (round(uvs[i][0], 5) + 0.0, round(1 - uvs[i][1], 5) + 0.0)
                if key not in table:
                    table[key] = len(table)
                    vertices += key[:3]
                    normals += key[3:6]
                    texcoords += key[6:]
                corners.append(table[key])
            for b, c in zip(corners[1:], corners[2:]):
                if len({corners[0], b, c}) == 3:
                    out.append((corners[0], b, c))
    indices, materials = [], []
    for material, triangles in faces.items():
        materials.append((len(indices) // 3, material))
        for triangle in triangles:
            indices += triangle

    def floats(values):
        return struct.pack("<%df" % len(values), *values)

    index_bytes = struct.pack("<%dI" % len(indices), *indices)
    return floats(vertices), floats(normals), floats(texcoords) if textured else None, index_bytes, materials


def save(library, path, root):
    """Writes the scene. Returns its counts of triangles and vertices."""
    numbers = {}  # image file -> texture number, in order of first use
    counts = [0, 0]

    def material(record):
        number = 0
        if record.texture:
            number = numbers.setdefault(record.texture, len(numbers) + 1)
        return library.material(record.ka, record.kd, record.ks, record.ke, record.ns, record.d, number)

    def meshes(model):
        model.check()
        for textured in (False, True):
            *arrays, starts = pack(model, textured)
            if not starts:
                continue
            counts[0] += len(arrays[3]) // 12
            counts[1] += len(arrays[0]) // 12
            entries = [(start, material(model.materials[name])) for start, name in starts]
            yield library.node(scenelib.TRIMESH, library.mesh(*arrays, entries))

    def group(g):
        nodes = []
        for child in g.children:
            if isinstance(child, Group):
                nodes.append(library.node(scenelib.GROUP, group(child)))
            elif isinstance(child, Light):
                light = library.light(child.name, child.kind, child.color, child.intensity)
                nodes.append(library.node(scenelib.LIGHT, light))
            else:
                nodes += meshes(child)
        return library.group(g.name, nodes, g.radius(), g.translation, g.rotation, (1, 1, 1))

    top = group(root)
    textures = [library.texture(n, os.path.splitext(os.path.basename(p))[0], p) for p, n in numbers.items()]
    library.save(path, top, textures)
    return counts
