// Models as scene files, written with the library.
#include "model.h"

#include "qelf/qelf.h"

#include <algorithm>
#include <cmath>

namespace pictures {
namespace {

struct mesh_arrays {
    std::vector<float> positions, normals, texcoords;
    std::vector<uint32_t> indices;
    std::vector<std::pair<uint32_t, int>> segments; // first face, material
};

template <class T> int32_t byte_size(const std::vector<T>& values) {
    return static_cast<int32_t>(values.size() * sizeof(T));
}

void append(std::vector<float>& values, std::initializer_list<double> more) {
    for (const double value : more)
        values.push_back(static_cast<float>(value));
}

// Fans, as the plug-in makes them of polygons; no vertex is shared.
mesh_arrays arrays_of(const model& m) {
    mesh_arrays a;
    for (const face& f : m.faces) {
        if (a.segments.empty() || a.segments.back().second != f.material)
            a.segments.emplace_back(a.indices.size() / 3, f.material);
        for (size_t k = 1; k + 1 < f.corners.size(); ++k)
            for (const size_t at : {size_t{0}, k, k + 1}) {
                const corner& c = f.corners[at];
                const vec3& p = m.positions[static_cast<size_t>(c.position) - 1];
                const vec3& n = m.normals[static_cast<size_t>(c.normal) - 1];
                const vec2 t = c.texcoord ? m.texcoords[static_cast<size_t>(c.texcoord) - 1] : vec2{};
                append(a.positions, {p.x, p.y, p.z});
                append(a.normals, {n.x, n.y, n.z});
                append(a.texcoords, {t.x, 1 - t.y}); // scene files count from the top
                a.indices.push_back(static_cast<uint32_t>(a.indices.size()));
            }
    }
    return a;
}

template <class T> T triple(const vec3& v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

QELF_Matrix matrix_record(const mat4& m) {
    QELF_Matrix record;
    for (size_t i = 0; i < 16; ++i)
        record.m[i] = static_cast<float>(m[i % 4][i / 4]);
    return record;
}

QELF_Material* material_record(const material& from, uint32_t map) {
    QELF_Material* record = QELF_createMaterial();
    record->ambient = triple<QELF_Color>(from.ambient);
    record->diffuse = triple<QELF_Color>(from.diffuse);
    record->specular = triple<QELF_Color>(from.specular);
    record->emissive = triple<QELF_Color>(from.emissive);
    record->spec_exp = static_cast<float>(from.exponent);
    record->alpha = static_cast<float>(from.alpha);
    record->diffuseMap = static_cast<uint16_t>(map);
    return record;
}

// Makes the records of a scene; `good` is false once one could not be made.
struct writer {
    QELF_Scene* scene = QELF_createScene("QELF");
    bool good = true;

    QELF_TriangleMesh* mesh(const model& m) {
        const mesh_arrays a = arrays_of(m);
        const auto count = static_cast<int32_t>(a.indices.size());
        QELF_TriangleMesh* mesh =
            QELF_createTriangleMesh(count, count / 3, static_cast<uint32_t>(a.segments.size()), 1, 0, 0, 1);
        mesh->local_transform = matrix_record(m.mesh_matrix);
        good &= QELF_allocateTrimeshBuffers(mesh) &&
                QELF_setVertexData(mesh, a.positions.data(), byte_size(a.positions)) &&
                QELF_setNormalData(mesh, a.normals.data(), byte_size(a.normals)) &&
                QELF_setTexcoordData(mesh, 0, a.texcoords.data(), byte_size(a.texcoords)) &&
                QELF_setIndexData(mesh, a.indices.data(), byte_size(a.indices));
        for (uint32_t i = 0; i < a.segments.size(); ++i) {
            const material& used = m.materials[static_cast<size_t>(a.segments[i].second)];
            if (!used.map.empty()) {
                QELF_Texture* texture = QELF_createTexture();
                good &= QELF_setTextureName(texture, "map") &&
                        QELF_setTexturePath(texture, used.map.c_str()) &&
                        QELF_addTextureToScene(scene, texture);
            }
            const uint32_t map = used.map.empty() ? 0 : scene->ntextures;
            good &= QELF_setMaterial(mesh, i, material_record(used, map)) &&
                    QELF_setMaterialStartIndex(mesh, i, a.segments[i].first);
        }
        return mesh;
    }

    QELF_SceneGroup* group(const model& m, const std::string& name) {
        std::vector<QELF_Node*> nodes;
        if (!m.faces.empty()) nodes.push_back(QELF_createNode(QELF_NODE_TRIMESH, mesh(m)));
        for (const lamp& l : m.lamps) {
            QELF_Light* light = QELF_createLight();
            light->type = l.type;
            light->color = triple<QELF_Color>(l.colour);
            light->intensity = static_cast<float>(l.percent);
            good &= QELF_setLightName(light, "lamp") != 0;
            nodes.push_back(QELF_createNode(QELF_NODE_LIGHT, light));
        }
        for (const model& below : m.groups)
            nodes.push_back(
                QELF_createNode(QELF_NODE_GROUP, group(below, name + std::to_string(nodes.size()))));

        QELF_SceneGroup* record = QELF_createSceneGroup(static_cast<uint32_t>(nodes.size()));
        good &= QELF_setGroupName(record, name.c_str()) != 0;
        for (const vec3& p : m.positions)
            record->radius = std::max(record->radius, static_cast<float>(std::hypot(p.x, p.y, p.z)));
        record->translation = triple<QELF_Vector3>(m.translation);
        record->rotation = triple<QELF_Vector3>(m.rotation);
        record->scaling = triple<QELF_Vector3>(m.scaling);
        record->local_transform = matrix_record(m.matrix);
        for (uint32_t i = 0; i < nodes.size(); ++i)
            good &= QELF_addNodeToGroup(record, i, nodes[i]) != 0;
        return record;
    }
};

} // namespace

bool model_write_qel(const model& m, const std::string& file) {
    writer w;
    w.scene->sceneHeader = QELF_createSceneHeader();
    w.scene->sceneHeader->versionMajor = 2;
    w.good &= QELF_addSceneGroupToScene(w.scene, w.group(m, "part")) != 0;
    IFF_Form* form = QELF_convertSceneToForm(w.scene);
    QELF_freeScene(w.scene);
    w.good = w.good && form && QELF_write(file.c_str(), &form->chunk);
    if (form) QELF_free(&form->chunk);
    return w.good;
}

} // namespace pictures
