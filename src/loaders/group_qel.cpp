#include "loaders/group_qel.h"

#include "base/heap.h"
#include "loaders/path.h"
#include "math/angle.h"
#include "qelf/qelf.h"
#include "scene/bindings.h"
#include "scene/export.h"
#include "scene/material.h"
#include "scene/trimesh.h"

#include <algorithm>
#include <cstdio>

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "vertex data is copied as it is in the file");

namespace {

constexpr unsigned short version_major = 2;
constexpr unsigned short version_minor = 0;

struct file_close {
    void operator()(FILE* file) const { fclose(file); }
};
using file_ptr = std::unique_ptr<FILE, file_close>;

// The tree of a file and its scenes, released together.
struct scene_file {
    IFF_Chunk* tree = nullptr;
    QELF_Scene** scenes = nullptr;
    unsigned int count = 0;

    scene_file() = default;
    scene_file(const scene_file&) = delete;
    scene_file& operator=(const scene_file&) = delete;
    ~scene_file() {
        if (scenes) QELF_freeScenes(scenes, count);
        if (tree) QELF_free(tree);
    }
};

void warn(const char* text) {
    fputs(text, stderr);
}

// Looks at the first 24 bytes, so that a file of another kind or version gets a clear answer.
bool check_header(FILE* file) {
    unsigned char bytes[8];
    const auto next = [&](size_t count) {
        if (fread(bytes, 1, count, file) == count) return true;
        warn("WARNING: I/O failure reading QEL file header\n");
        return false;
    };
    const auto is = [](const unsigned char* found, const char* id) {
        if (memcmp(found, id, 4) == 0) return true;
        fprintf(stderr, "WARNING: QEL header failed validation, can't find %s chunk\n", id);
        return false;
    };
    if (!next(4) || !is(bytes, "FORM")) return false;
    if (!next(8) || !is(bytes + 4, "QELF")) return false; // size and type
    if (!next(4) || !is(bytes, "SHDR")) return false;
    if (!next(8)) return false; // size and versions
    const auto major = static_cast<unsigned short>(bytes[4] << 8 | bytes[5]);
    const auto minor = static_cast<unsigned short>(bytes[6] << 8 | bytes[7]);
    if (major == version_major && minor == version_minor) return true;
    fprintf(
        stderr,
        "WARNING: QEL file uses QEL format with version %hu.%hu, software uses QEL format version %hu.%hu\n",
        major, minor, version_major, version_minor);
    return false;
}

// A terminated copy of a text, which may be null.
char* copy_text(const IFF_RawChunk* text) {
    const size_t length = text ? static_cast<size_t>(text->chunk.chunkSize) : 0;
    auto* const copy = heap_array<char>(length + 1);
    if (!copy) return nullptr;
    if (length > 0) memcpy(copy, text->data, length);
    copy[length] = '\0';
    return copy;
}

bool add_texture(scene* s, const QELF_Texture* from, int32_t index, const char* directory) {
    const heap_ptr<char> path{copy_text(from->path)};
    auto* const t = path ? heap_zeroed<texture>() : nullptr;
    if (!t || !texture_create_beside(t, directory, path.get())) {
        free(t);
        return false;
    }
    t->index = index;
    const int32_t before = s->ntextures;
    if (scene_pushtexture(s, t)) return true;
    if (s->ntextures == before) texture_free(t);
    return false;
}

// A new reference to the map-th texture of the file; null for 0 and for what the file does not have.
texture* texture_reference(const scene* s, uint16_t map) {
    if (map == 0 || map > s->ntextures) return nullptr;
    return texture_getref(s->textures[map - 1]);
}

// False when memory was short.
bool add_material(trimesh* mesh, const QELF_MaterialEntry& entry, const scene* s) {
    const QELF_Material& from = *entry.material;
    auto* const m = heap_array<material>(1);
    if (!m) return false;
    material_create(m, "material");
    if (!m->name) {
        material_free(m);
        return false;
    }
    const auto copy = [](float to[3], const QELF_Color& c) {
        to[0] = c.r;
        to[1] = c.g;
        to[2] = c.b;
    };
    copy(m->ambient, from.ambient);
    copy(m->diffuse, from.diffuse);
    copy(m->specular, from.specular);
    copy(m->emissive, from.emissive);
    m->spec_exp = from.spec_exp;
    m->alpha = from.alpha;
    m->reflectivity = from.reflectivity;
    m->diffuseMap = texture_reference(s, from.diffuseMap);
    m->specularMap = texture_reference(s, from.specularMap);
    m->emissiveMap = texture_reference(s, from.emissiveMap);
    m->bumpMap = texture_reference(s, from.bumpMap);
    m->normalMap = texture_reference(s, from.normalMap);
    m->reflectionMap = texture_reference(s, from.reflectionMap);
    const int32_t before = mesh->nmaterials;
    const int pushed = trimesh_pushmaterialsegment(mesh, m, static_cast<int32_t>(entry.startIndex));
    if (!pushed && mesh->nmaterials == before) material_free(m);
    return pushed != 0;
}

// Start indices in order and within the faces, face indices within the vertices.
bool check_indices(const QELF_TriangleMesh* from) {
    uint32_t previous = 0;
    for (uint32_t i = 0; i < from->nmaterials; ++i) {
        const uint32_t start = from->materials[i].startIndex;
        if (start < previous || start > static_cast<uint32_t>(from->nfaces)) {
            fprintf(stderr,
                    "WARNING: QEL mesh has start index %u for material %u, out of order or beyond its %d "
                    "faces\n",
                    start, i, from->nfaces);
            return false;
        }
        previous = start;
    }
    const auto index_at = [from](size_t i) {
        uint32_t index = 0;
        memcpy(&index, from->indexData->data + i * sizeof(index), sizeof(index));
        return index;
    };
    const auto nvertices = static_cast<uint32_t>(from->nvertices);
    const auto corners = static_cast<size_t>(from->nfaces) * 3;
    bool good = true; // one answer for all, so that the loop stays fast
    for (size_t i = 0; i < corners; ++i) {
        good &= index_at(i) < nvertices;
    }
    if (good) return true;
    size_t first = 0;
    while (index_at(first) < nvertices) {
        ++first;
    }
    fprintf(stderr, "WARNING: QEL mesh has index %u in face %zu, but %u vertices\n", index_at(first),
            first / 3, nvertices);
    return false;
}

// Moves an array of the file into the mesh, in the place of its own: large scenes are held only once.
template <class T> void move_array(IFF_RawChunk* from, T*& to) {
    if (!from || !from->data) return; // nothing in it
    free(to);
    to = static_cast<T*>(static_cast<void*>(from->data));
    from->data = nullptr;
    from->chunk.chunkSize = 0;
}

// False when memory was short for a material, which ends the materials.
bool fill_mesh(trimesh* mesh, QELF_TriangleMesh* from, const scene* s) {
    memcpy(mesh->transform, from->local_transform.m, sizeof(mesh->transform));
    uint32_t added = 0;
    while (added < from->nmaterials && add_material(mesh, from->materials[added], s)) {
        ++added;
    }
    move_array(from->vertexData, mesh->vertices);
    move_array(from->normalData, mesh->normals);
    move_array(from->tangentData, mesh->tangents);
    move_array(from->binormalData, mesh->binormals);
    for (int32_t set = 0; set < from->use_textures; ++set) {
        move_array(from->texcoordData[set], mesh->texcoords[set]);
    }
    move_array(from->indexData, mesh->indices);
    mesh->nvertices = from->nvertices;
    mesh->nfaces = from->nfaces;
    mesh->vertex_capacity = std::max(from->nvertices, mesh->vertex_capacity);
    mesh->face_capacity = std::max(from->nfaces, mesh->face_capacity);
    mesh->calc_normals = !from->use_normals;
    return added == from->nmaterials;
}

// What became of a node, from good to bad: all of it is there; memory was short, and it or a part of it is
// left out; it is no good.
enum class outcome { whole, cut, refused };

// Hands a filled record to the target group, or releases it.
outcome push_node(group* target, void* node, node_load load, node_config config, node_prerender prerender,
                  node_render render, node_export export_node, node_free free_node) {
    const int32_t before = target->nnodes;
    group_push(target, node, load, config, prerender, render, export_node, free_node);
    if (target->nnodes > before) return outcome::whole;
    free_node(node);
    free(node);
    return outcome::cut;
}

outcome process_scenegroup(const QELF_SceneGroup* from, group* target, scene* s);

outcome add_group(group* target, const QELF_SceneGroup* from, scene* s) {
    auto* const g = heap_zeroed<group>();
    if (!g) return outcome::cut;
    const int32_t nlights = s->nlights;
    const bool created = group_create(g, static_cast<int32_t>(from->nnodes));
    const outcome filled = created ? process_scenegroup(from, g, s) : outcome::cut;
    if (!created || filled == outcome::refused) {
        group_free(g);
        free(g);
        return filled;
    }
    const outcome pushed = push_node(target, g, group_load, group_config, group_prerender, group_render,
                                     group_export, group_free);
    if (pushed == outcome::cut) s->nlights = nlights; // those of the group are gone with it
    return std::max(filled, pushed);
}

outcome add_mesh(group* target, QELF_TriangleMesh* from, const scene* s) {
    if (!check_indices(from)) return outcome::refused;
    auto* const mesh = heap_array<trimesh>(1);
    if (!mesh) return outcome::cut;
    // Without room for vertices and faces: the arrays come from the file.
    if (!trimesh_create(mesh, "mesh", 0, 0, static_cast<int32_t>(from->nmaterials), from->use_normals,
                        from->use_textures, from->use_tangents, from->use_binormals)) {
        trimesh_free(mesh);
        free(mesh);
        return outcome::cut;
    }
    const bool filled = fill_mesh(mesh, from, s) && mesh->name;
    const outcome pushed = push_node(target, mesh, trimesh_load, trimesh_config, trimesh_prerender,
                                     trimesh_render, trimesh_export, trimesh_free);
    return filled ? pushed : outcome::cut;
}

outcome add_light(group* target, const QELF_Light* from, scene* s) {
    auto* const l = heap_zeroed<light>();
    if (!l) return outcome::cut;
    light_create(l, "light");
    const bool named = l->name != nullptr;
    l->type = from->type;
    l->color[0] = from->color.r;
    l->color[1] = from->color.g;
    l->color[2] = from->color.b;
    l->intensity = from->intensity;
    const outcome pushed = push_node(target, l, light_load, light_config, light_prerender, light_render,
                                     light_export, light_free);
    if (pushed != outcome::whole || !scene_pushlight(s, l) || !named) return outcome::cut;
    return outcome::whole;
}

outcome add_node(group* target, const QELF_Node* node, scene* s) {
    switch (node->nodeType) {
    case QELF_NODE_GROUP:
        return add_group(target, static_cast<QELF_SceneGroup*>(node->content), s);
    case QELF_NODE_TRIMESH:
        return add_mesh(target, static_cast<QELF_TriangleMesh*>(node->content), s);
    default:
        return add_light(target, static_cast<QELF_Light*>(node->content), s);
    }
}

void set_bind_placement(group* target, const QELF_SceneGroup* from) {
    memcpy(target->bind_transform, from->local_transform.m, sizeof(target->bind_transform));
    memcpy(target->bind_translation, &from->translation, sizeof(target->bind_translation));
    memcpy(target->bind_scaling, &from->scaling, sizeof(target->bind_scaling));
    target->bind_rotation[0] = radians_from_degrees(from->rotation.x);
    target->bind_rotation[1] = radians_from_degrees(from->rotation.y);
    target->bind_rotation[2] = radians_from_degrees(from->rotation.z);
}

// Fills a group from the file's. Stops at what is no good; what was pushed stays the target's. The depth is
// bounded: the reader refuses deeper files.
outcome process_scenegroup(const QELF_SceneGroup* from, group* target, scene* s) {
    target->radius = from->radius;
    target->name = copy_text(from->name);
    outcome result = target->name ? outcome::whole : outcome::cut;
    if (from->nnodes > 0) set_bind_placement(target, from);
    for (uint32_t i = 0; i < from->nnodes && result != outcome::refused; ++i) {
        result = std::max(result, add_node(target, from->nodes[i], s));
    }
    return result;
}

bool build(scene* s, const QELF_Scene* from, const char* directory, load_context* context) {
    if (from->nsceneGroups == 0) {
        warn("WARNING: QEL file holds no scene group\n");
        return false;
    }
    if (!scene_create(s)) return false;
    for (uint32_t i = 0; i < from->ntextures; ++i) {
        if (!add_texture(s, from->textures[i], static_cast<int32_t>(i), directory)) return false;
    }
    const outcome result = process_scenegroup(from->sceneGroups[0], &s->root, s);
    if (result == outcome::cut) context->incomplete = true;
    return result != outcome::refused;
}

bool load(scene* s, const char* filename, load_context* context) {
    const heap_ptr<char> path{resource_locate(filename, context)};
    const heap_ptr<char> directory{path ? directory_of(filename) : nullptr};
    if (!directory) return false;
    {
        const file_ptr file{fopen(path.get(), "rb")};
        if (!file) {
            warn("WARNING: could not open QEL file\n");
            return false;
        }
        if (!check_header(file.get())) return false;
    }
    scene_file file;
    file.tree = QELF_read(path.get());
    if (!file.tree) return false;
    file.scenes = QELF_extractScenes(file.tree, &file.count);
    return file.scenes && build(s, file.scenes[0], directory.get(), context);
}

} // namespace

int group_loadqel(scene* s, const char* filename, load_context* context) {
    *s = {};
    if (load(s, filename, context)) return 1;
    scene_free(s);
    *s = {};
    return 0;
}
