"""The scene-file library's C interface (include/qelf/qelf.h, include/iff/iff.h), as far as scenes need it."""

import ctypes
import os
from ctypes import POINTER, Structure, c_char, c_float, c_int32, c_uint8, c_uint16, c_uint32, c_void_p


class Chunk(Structure):
    _fields_ = [("parent", c_void_p), ("id", c_char * 4), ("size", c_int32)]


class Vector3(Structure):
    _fields_ = [("x", c_float), ("y", c_float), ("z", c_float)]


class Matrix(Structure):
    _fields_ = [("m", c_float * 16)]


class Color(Structure):
    _fields_ = [("r", c_float), ("g", c_float), ("b", c_float)]


class SceneHeader(Structure):
    _fields_ = [("chunk", Chunk), ("major", c_uint16), ("minor", c_uint16)]


class Scene(Structure):  # as far as its header
    _fields_ = [("form_type", c_char * 4), ("header", POINTER(SceneHeader))]


class SceneGroup(Structure):
    _fields_ = [
        ("chunk", Chunk),
        ("name_length", c_int32),
        ("name", c_void_p),
        ("nnodes", c_uint32),
        ("radius", c_float),
        ("translation", Vector3),
        ("rotation", Vector3),
        ("scaling", Vector3),
        ("local_transform", Matrix),
        ("nodes", c_void_p),
    ]


class Material(Structure):
    _fields_ = (
        [("chunk", Chunk)]
        + [(name, Color) for name in ("ambient", "diffuse", "specular", "emissive")]
        + [(name, c_float) for name in ("spec_exp", "alpha", "reflectivity")]
        + [(name + "Map", c_uint16) for name in "diffuse specular ambient emissive bump normal reflection".split()]
    )


class TriangleMesh(Structure):
    _fields_ = [
        ("chunk", Chunk),
        ("nvertices", c_int32),
        ("nfaces", c_int32),
        ("nmaterials", c_uint32),
        ("use", c_uint8 * 4),
        ("local_transform", Matrix),
        ("data", c_void_p * 7),
    ]


class Light(Structure):
    _fields_ = [
        ("chunk", Chunk),
        ("name_length", c_int32),
        ("name", c_void_p),
        ("type", c_int32),
        ("color", Color),
        ("intensity", c_float),
    ]


class Texture(Structure):
    _fields_ = [
        ("chunk", Chunk),
        ("index", c_uint32),
        ("name_length", c_int32),
        ("path_length", c_int32),
        ("name", c_void_p),
        ("path", c_void_p),
    ]


GROUP, TRIMESH, LIGHT = 1, 2, 3
DIRECTIONAL, POINT = 1, 2

Text = ctypes.c_char_p
OPERATIONS = {
    "QELF_createScene": (POINTER(Scene), Text),
    "QELF_createSceneHeader": (POINTER(SceneHeader),),
    "QELF_createSceneGroup": (POINTER(SceneGroup), c_uint32),
    "QELF_setGroupName": (c_int32, POINTER(SceneGroup), Text),
    "QELF_createNode": (c_void_p, c_uint8, c_void_p),
    "QELF_addNodeToGroup": (c_int32, POINTER(SceneGroup), c_uint32, c_void_p),
    "QELF_createTriangleMesh": (POINTER(TriangleMesh), c_int32, c_int32, c_uint32) + (c_uint8,) * 4,
    "QELF_allocateTrimeshBuffers": (c_int32, POINTER(TriangleMesh)),
    "QELF_setVertexData": (c_int32, POINTER(TriangleMesh), Text, c_int32),
    "QELF_setNormalData": (c_int32, POINTER(TriangleMesh), Text, c_int32),
    "QELF_setTexcoordData": (c_int32, POINTER(TriangleMesh), c_uint32, Text, c_int32),
    "QELF_setIndexData": (c_int32, POINTER(TriangleMesh), Text, c_int32),
    "QELF_createMaterial": (POINTER(Material),),
    "QELF_setMaterial": (c_int32, POINTER(TriangleMesh), c_uint32, POINTER(Material)),
    "QELF_setMaterialStartIndex": (c_int32, POINTER(TriangleMesh), c_uint32, c_uint32),
    "QELF_createLight": (POINTER(Light),),
    "QELF_setLightName": (c_int32, POINTER(Light), Text),
    "QELF_createTexture": (POINTER(Texture),),
    "QELF_setTextureName": (c_int32, POINTER(Texture), Text),
    "QELF_setTexturePath": (c_int32, POINTER(Texture), Text),
    "QELF_addSceneGroupToScene": (c_int32, POINTER(Scene), POINTER(SceneGroup)),
    "QELF_addTextureToScene": (c_int32, POINTER(Scene), POINTER(Texture)),
    "QELF_checkScene": (c_int32, POINTER(Scene)),
    "QELF_convertSceneToForm": (c_void_p, POINTER(Scene)),
    "QELF_freeScene": (None, POINTER(Scene)),
    "QELF_check": (c_int32, c_void_p),
    "QELF_write": (c_int32, Text, c_void_p),
    "QELF_read": (c_void_p, Text),
    "QELF_compare": (c_int32, c_void_p, c_void_p),
    "QELF_free": (None, c_void_p),
}


class Library:
    """The operations as methods without their prefix; a result of 0 or null stops the script."""

    def __init__(self, path):
        # The plug-in takes the host's functions from whoever loads it: have them ready.
        ctypes.CDLL(os.path.join(os.path.dirname(os.path.abspath(path)), "libkora.so"), ctypes.RTLD_GLOBAL)
        library = ctypes.CDLL(os.path.abspath(path))
        for name, (result, *arguments) in OPERATIONS.items():
            function = getattr(library, name)
            function.restype, function.argtypes = result, arguments
            setattr(self, name[len("QELF_") :], function if result is None else self._checked(function))

    @staticmethod
    def _checked(function):
        def call(*arguments):
            result = function(*arguments)
            if not result:
                raise SystemExit("make-scenes: %s failed" % function.__name__)
            return result

        return call

    def node(self, kind, content):
        return self.createNode(kind, ctypes.cast(content, c_void_p))

    def group(self, name, nodes, radius, translation, rotation, scaling):
        group = self.createSceneGroup(len(nodes))
        record = group.contents
        record.radius = radius
        record.translation, record.rotation = Vector3(*translation), Vector3(*rotation)
        record.scaling = Vector3(*scaling)
        self.setGroupName(group, name.encode())
        for i, node in enumerate(nodes):
            self.addNodeToGroup(group, i, node)
        return group

    def mesh(self, vertices, normals, texcoords, indices, materials):
        """Little-endian arrays as bytes, `texcoords` or None; materials are (first face, record)."""
        mesh = self.createTriangleMesh(
            len(vertices) // 12, len(indices) // 12, len(materials), 1, 0, 0, 0 if texcoords is None else 1
        )
        self.allocateTrimeshBuffers(mesh)
        self.setVertexData(mesh, vertices, len(vertices))
        self.setNormalData(mesh, normals, len(normals))
        if texcoords is not None:
            self.setTexcoordData(mesh, 0, texcoords, len(texcoords))
        self.setIndexData(mesh, indices, len(indices))
        for i, (start, material) in enumerate(materials):
            self.setMaterial(mesh, i, material)
            self.setMaterialStartIndex(mesh, i, start)
        return mesh

    def material(self, ambient, diffuse, specular, emissive, exponent, alpha, texture):
        material = self.createMaterial()
        record = material.contents
        record.ambient, record.diffuse = Color(*ambient), Color(*diffuse)
        record.specular, record.emissive = Color(*specular), Color(*emissive)
        record.spec_exp, record.alpha, record.diffuseMap = exponent, alpha, texture
        return material

    def light(self, name, kind, color, intensity):
        light = self.createLight()
        record = light.contents
        record.type, record.color, record.intensity = kind, Color(*color), intensity
        self.setLightName(light, name.encode())
        return light

    def texture(self, index, name, path):
        texture = self.createTexture()
        texture.contents.index = index
        self.setTextureName(texture, name.encode())
        self.setTexturePath(texture, path.encode())
        return texture

    def save(self, path, root, textures):
        """Takes root group and textures over; writes beside the target, reads back, compares, renames."""
        scene = self.createScene(b"QELF")
        header = scene.contents.header = self.createSceneHeader()
        header.contents.major = 2
        self.addSceneGroupToScene(scene, root)
        for texture in textures:
            self.addTextureToScene(scene, texture)
        self.checkScene(scene)
        form = self.convertSceneToForm(scene)
        self.freeScene(scene)
        self.check(form)
        part = (path + ".part").encode()
        try:
            self.write(part, form)
            copy = self.read(part)
            self.compare(form, copy)
            os.replace(part, path.encode())
        finally:
            if os.path.exists(part):
                os.remove(part)
        self.free(copy)
        self.free(form)
