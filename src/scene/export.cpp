#include "scene/export.h"

#include "base/heap.h"
#include "math/angle.h"
#include "scene/group.h"
#include "scene/light.h"
#include "scene/trimesh.h"

namespace {

struct group_release {
    void operator()(QELF_SceneGroup* g) const {
        QELF_freeSceneGroup(g);
        free(g);
    }
};
struct mesh_release {
    void operator()(QELF_TriangleMesh* m) const {
        QELF_freeTriangleMesh(m);
        free(m);
    }
};
struct light_release {
    void operator()(QELF_Light* l) const {
        QELF_freeLight(l);
        free(l);
    }
};

// The node takes the content over only when it could be made.
template <class Holder> QELF_Node* wrap(uint8_t type, Holder&& content) {
    QELF_Node* const node = QELF_createNode(type, content.get());
    if (node) static_cast<void>(content.release());
    return node;
}

uint16_t map_number(const texture* map) {
    return map ? static_cast<uint16_t>(map->index + 1) : uint16_t{0};
}

// A flag as the file has it.
uint8_t flag(int32_t value) {
    return value > 0 && value <= UINT8_MAX ? static_cast<uint8_t>(value) : value != 0;
}

// Whether all arrays that the mesh's flags promise are still there.
bool has_arrays(const trimesh* mesh) {
    if (!mesh->vertices || !mesh->indices || (mesh->use_normals && !mesh->normals) ||
        (mesh->use_tangents && !mesh->tangents) || (mesh->use_binormals && !mesh->binormals)) {
        return false;
    }
    if (mesh->use_textures > UINT8_MAX || (mesh->use_textures > 0 && !mesh->texcoords)) return false;
    for (int32_t set = 0; set < mesh->use_textures; ++set) {
        if (!mesh->texcoords[set]) return false;
    }
    return true;
}

bool set_materials(QELF_TriangleMesh* out, const trimesh* mesh) {
    for (int32_t i = 0; i < mesh->nmaterials; ++i) {
        const auto index = static_cast<uint32_t>(i);
        QELF_setMaterialStartIndex(out, index, static_cast<uint32_t>(mesh->materials[i].startIndex));
        QELF_Material* const m = material_export(mesh->materials[i].material);
        if (!QELF_setMaterial(out, index, m)) {
            QELF_freeMaterial(m);
            return false;
        }
    }
    return true;
}

bool set_arrays(QELF_TriangleMesh* out, const trimesh* mesh) {
    int32_t triples = 0, pairs = 0, faces = 0;
    if (__builtin_mul_overflow(mesh->nvertices, 12, &triples) ||
        __builtin_mul_overflow(mesh->nvertices, 8, &pairs) ||
        __builtin_mul_overflow(mesh->nfaces, 12, &faces)) {
        return false;
    }
    bool good =
        QELF_setVertexData(out, mesh->vertices, triples) && QELF_setIndexData(out, mesh->indices, faces);
    if (mesh->use_normals) good = good && QELF_setNormalData(out, mesh->normals, triples);
    if (mesh->use_tangents) good = good && QELF_setTangentData(out, mesh->tangents, triples);
    if (mesh->use_binormals) good = good && QELF_setBinormalData(out, mesh->binormals, triples);
    for (int32_t set = 0; set < mesh->use_textures; ++set) {
        good = good && QELF_setTexcoordData(out, static_cast<uint32_t>(set), mesh->texcoords[set], pairs);
    }
    return good;
}

} // namespace

QELF_Material* material_export(const material* m) {
    QELF_Material* const out = QELF_createMaterial();
    if (!out || !m) return out;
    out->ambient = {m->ambient[0], m->ambient[1], m->ambient[2]};
    out->diffuse = {m->diffuse[0], m->diffuse[1], m->diffuse[2]};
    out->specular = {m->specular[0], m->specular[1], m->specular[2]};
    out->emissive = {m->emissive[0], m->emissive[1], m->emissive[2]};
    out->spec_exp = m->spec_exp;
    out->alpha = m->alpha;
    out->reflectivity = m->reflectivity;
    out->diffuseMap = map_number(m->diffuseMap);
    out->specularMap = map_number(m->specularMap);
    out->emissiveMap = map_number(m->emissiveMap);
    out->bumpMap = map_number(m->bumpMap);
    out->normalMap = map_number(m->normalMap);
    out->reflectionMap = map_number(m->reflectionMap);
    return out;
}

QELF_Node* group_export(void* node) {
    const auto* g = static_cast<group*>(node);
    std::unique_ptr<QELF_SceneGroup, group_release> out{
        QELF_createSceneGroup(static_cast<uint32_t>(g->nnodes))};
    if (!out || !QELF_setGroupName(out.get(), g->name)) return nullptr;
    out->radius = g->radius;
    QELF_setMatrixValues(&out->local_transform, g->transform);
    QELF_setVector3Values(&out->translation, g->translation);
    QELF_setVector3Values(&out->scaling, g->scaling);
    out->rotation = {degrees_from_radians(g->rotation[0]), degrees_from_radians(g->rotation[1]),
                     degrees_from_radians(g->rotation[2])};
    for (int32_t i = 0; i < g->nnodes; ++i) {
        const node_entry& entry = g->nodes[i];
        QELF_Node* const child = entry.export_node ? entry.export_node(entry.node) : nullptr;
        if (child && !QELF_addNodeToGroup(out.get(), static_cast<uint32_t>(i), child)) {
            QELF_freeNode(child);
            return nullptr;
        }
    }
    return wrap(QELF_NODE_GROUP, out);
}

QELF_Node* trimesh_export(void* node) {
    const auto* mesh = static_cast<trimesh*>(node);
    if (!has_arrays(mesh)) return nullptr;
    std::unique_ptr<QELF_TriangleMesh, mesh_release> out{QELF_createTriangleMesh(
        mesh->nvertices, mesh->nfaces, static_cast<uint32_t>(mesh->nmaterials), flag(mesh->use_normals),
        flag(mesh->use_tangents), flag(mesh->use_binormals), static_cast<uint8_t>(mesh->use_textures))};
    if (!out) return nullptr;
    if (!QELF_allocateTrimeshBuffers(out.get())) {
        static_cast<void>(out.release()); // it released itself
        return nullptr;
    }
    QELF_setMatrixValues(&out->local_transform, mesh->transform);
    if (!set_materials(out.get(), mesh) || !set_arrays(out.get(), mesh)) return nullptr;
    return wrap(QELF_NODE_TRIMESH, out);
}

QELF_Node* light_export(void* node) {
    const auto* l = static_cast<light*>(node);
    std::unique_ptr<QELF_Light, light_release> out{QELF_createLight()};
    if (!out || !QELF_setLightName(out.get(), l->name)) return nullptr;
    out->type = l->type;
    out->color = {l->color[0], l->color[1], l->color[2]};
    out->intensity = l->intensity;
    return wrap(QELF_NODE_LIGHT, out);
}
