// Models as scene files, written with the library: QELF_write refuses a tree that a set operation left
// something out of.
#include "model.h"
#include "qelf/qelf.h"

namespace pictures {
namespace {

template <class T> T triple(const vec& v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

QELF_Matrix matrix_record(const mat4& m) {
    QELF_Matrix record;
    for (size_t i = 0; i < 16; ++i)
        record.m[i] = static_cast<float>(m[i % 4][i / 4]);
    return record;
}

QELF_Material* material_record(const material& from, QELF_Scene* scene) {
    QELF_Material* record = QELF_createMaterial();
    record->ambient = triple<QELF_Color>(from.ambient);
    record->diffuse = triple<QELF_Color>(from.diffuse);
    record->specular = triple<QELF_Color>(from.specular);
    record->emissive = triple<QELF_Color>(from.emissive);
    record->spec_exp = static_cast<float>(from.exponent);
    record->alpha = static_cast<float>(from.alpha);
    if (from.map.empty()) return record;
    QELF_Texture* texture = QELF_createTexture();
    QELF_setTextureName(texture, "map");
    QELF_setTexturePath(texture, from.map.c_str());
    QELF_addTextureToScene(scene, texture);
    record->diffuseMap = static_cast<uint16_t>(scene->ntextures);
    return record;
}

// Fans, as the plug-in makes them of polygons; no vertex is shared.
QELF_TriangleMesh* mesh_record(const model& m, QELF_Scene* scene) {
    std::vector<QELF_Vector3> positions, normals;
    std::vector<float> texcoords;
    std::vector<uint32_t> indices;
    std::vector<std::pair<size_t, int>> segments; // first face, material
    for (const face& f : m.faces) {
        if (segments.empty() || segments.back().second != f.material)
            segments.emplace_back(indices.size() / 3, f.material);
        for (size_t k = 1; k + 1 < f.corners.size(); ++k)
            for (const size_t at : {size_t{0}, k, k + 1}) {
                const corner& c = f.corners[at];
                const vec t = c.texcoord.value_or(vec{});
                positions.push_back(triple<QELF_Vector3>(c.position));
                normals.push_back(triple<QELF_Vector3>(c.normal.value()));
                texcoords.push_back(static_cast<float>(t.x));
                texcoords.push_back(static_cast<float>(1 - t.y)); // scene files count from the top
                indices.push_back(static_cast<uint32_t>(indices.size()));
            }
    }
    const auto count = static_cast<int32_t>(indices.size());
    QELF_TriangleMesh* mesh =
        QELF_createTriangleMesh(count, count / 3, static_cast<uint32_t>(segments.size()), 1, 0, 0, 1);
    mesh->local_transform = matrix_record(m.mesh_matrix);
    QELF_allocateTrimeshBuffers(mesh);
    QELF_setVertexData(mesh, positions.data(), count * 12);
    QELF_setNormalData(mesh, normals.data(), count * 12);
    QELF_setTexcoordData(mesh, 0, texcoords.data(), count * 8);
    QELF_setIndexData(mesh, indices.data(), count * 4);
    for (uint32_t i = 0; i < mesh->nmaterials; ++i) {
        const auto& [first, used] = segments[i];
        QELF_setMaterial(mesh, i, material_record(m.materials[static_cast<size_t>(used)], scene));
        QELF_setMaterialStartIndex(mesh, i, static_cast<uint32_t>(first));
    }
    return mesh;
}

QELF_Light* light_record(const lamp& from) {
    QELF_Light* light = QELF_createLight();
    light->type = from.type;
    light->color = triple<QELF_Color>(from.colour);
    light->intensity = static_cast<float>(from.percent);
    QELF_setLightName(light, "lamp");
    return light;
}

QELF_SceneGroup* group_record(const model& m, const std::string& name, QELF_Scene* scene) {
    std::vector<QELF_Node*> nodes;
    if (!m.faces.empty()) nodes.push_back(QELF_createNode(QELF_NODE_TRIMESH, mesh_record(m, scene)));
    for (const lamp& l : m.lamps)
        nodes.push_back(QELF_createNode(QELF_NODE_LIGHT, light_record(l)));
    for (const model& below : m.groups) {
        const std::string unique = name + std::to_string(nodes.size());
        nodes.push_back(QELF_createNode(QELF_NODE_GROUP, group_record(below, unique, scene)));
    }
    QELF_SceneGroup* record = QELF_createSceneGroup(static_cast<uint32_t>(nodes.size()));
    QELF_setGroupName(record, name.c_str());
    record->radius = static_cast<float>(m.radius());
    record->translation = triple<QELF_Vector3>(m.translation);
    record->rotation = triple<QELF_Vector3>(m.rotation);
    record->scaling = triple<QELF_Vector3>(m.scaling);
    record->local_transform = matrix_record(m.matrix);
    for (uint32_t i = 0; i < record->nnodes; ++i)
        QELF_addNodeToGroup(record, i, nodes[i]);
    return record;
}

} // namespace

bool model_write_qel(const model& m, const std::string& file) {
    QELF_Scene* scene = QELF_createScene("QELF");
    scene->sceneHeader = QELF_createSceneHeader();
    scene->sceneHeader->versionMajor = 2;
    QELF_addSceneGroupToScene(scene, group_record(m, "part", scene));
    IFF_Form* form = QELF_convertSceneToForm(scene);
    QELF_freeScene(scene);
    const bool written = QELF_write(file.c_str(), &form->chunk);
    QELF_free(&form->chunk);
    return written;
}

} // namespace pictures
