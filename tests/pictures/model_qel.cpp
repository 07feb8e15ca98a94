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

QELF_Color colour(const vec3& v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

QELF_Material* material_record(const material& from, uint16_t map) {
    QELF_Material* record = QELF_createMaterial();
    record->ambient = colour(from.ambient);
    record->diffuse = colour(from.diffuse);
    record->specular = colour(from.specular);
    record->spec_exp = static_cast<float>(from.exponent);
    record->alpha = static_cast<float>(from.alpha);
    record->diffuseMap = map;
    return record;
}

} // namespace

bool model_write_qel(const model& m, const std::string& file) {
    const mesh_arrays a = arrays_of(m);
    QELF_Scene* scene = QELF_createScene("QELF");
    scene->sceneHeader = QELF_createSceneHeader();
    scene->sceneHeader->versionMajor = 2;
    bool good = true;

    QELF_SceneGroup* group = QELF_createSceneGroup(a.indices.empty() ? 0 : 2);
    good &= QELF_setGroupName(group, "part") != 0;
    QELF_setVector3ToOnes(&group->scaling);
    for (const vec3& p : m.positions)
        group->radius = std::max(group->radius, static_cast<float>(std::hypot(p.x, p.y, p.z)));
    if (!a.indices.empty()) {
        const auto count = static_cast<int32_t>(a.indices.size());
        QELF_TriangleMesh* mesh =
            QELF_createTriangleMesh(count, count / 3, static_cast<uint32_t>(a.segments.size()), 1, 0, 0, 1);
        good &= QELF_allocateTrimeshBuffers(mesh) &&
                QELF_setVertexData(mesh, a.positions.data(), byte_size(a.positions)) &&
                QELF_setNormalData(mesh, a.normals.data(), byte_size(a.normals)) &&
                QELF_setTexcoordData(mesh, 0, a.texcoords.data(), byte_size(a.texcoords)) &&
                QELF_setIndexData(mesh, a.indices.data(), byte_size(a.indices));
        uint16_t textures = 0;
        for (uint32_t i = 0; i < a.segments.size(); ++i) {
            const material& used = m.materials[static_cast<size_t>(a.segments[i].second)];
            if (!used.map.empty()) {
                QELF_Texture* texture = QELF_createTexture();
                good &= QELF_setTextureName(texture, "map") &&
                        QELF_setTexturePath(texture, used.map.c_str()) &&
                        QELF_addTextureToScene(scene, texture);
                ++textures;
            }
            const uint16_t map = used.map.empty() ? 0 : textures;
            good &= QELF_setMaterial(mesh, i, material_record(used, map)) &&
                    QELF_setMaterialStartIndex(mesh, i, a.segments[i].first);
        }
        QELF_Light* lamp = QELF_createLight();
        lamp->type = 1;
        lamp->intensity = 90;
        good &= QELF_setLightName(lamp, "lamp") &&
                QELF_addNodeToGroup(group, 0, QELF_createNode(QELF_NODE_TRIMESH, mesh)) &&
                QELF_addNodeToGroup(group, 1, QELF_createNode(QELF_NODE_LIGHT, lamp));
    }
    good &= QELF_addSceneGroupToScene(scene, group) != 0;
    IFF_Form* form = QELF_convertSceneToForm(scene);
    QELF_freeScene(scene);
    good = good && form && QELF_write(file.c_str(), &form->chunk);
    if (form) QELF_free(&form->chunk);
    return good;
}

} // namespace pictures
