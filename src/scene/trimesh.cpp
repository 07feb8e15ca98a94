#include "scene/trimesh.h"

#include "base/heap.h"
#include "model3d/math.h"
#include "scene/material.h"

#include <algorithm>

namespace {

constexpr size_t per_position = 3; // normals, tangents, binormals and faces, too
constexpr size_t per_texcoord = 2;

// Resizes an array of `count` tuples of `each` elements; false when that fails or cannot be counted.
template <class T> bool resize_tuples(T*& array, int32_t count, size_t each) {
    size_t elements = 0;
    if (__builtin_mul_overflow(static_cast<size_t>(count), each, &elements)) return false;
    return heap_resize(array, elements);
}

// One more than requested, so that a mesh of known size never grows; 0 when that cannot be counted.
int32_t roomy(int32_t request) {
    int32_t capacity = 0;
    return __builtin_add_overflow(std::max(request, 0), 1, &capacity) ? 0 : capacity;
}

// The per-vertex arrays of triples.
float* trimesh::*const vertex_arrays[] = {&trimesh::vertices, &trimesh::normals, &trimesh::tangents,
                                          &trimesh::binormals};

// Keeps contents when any array fails; those already resized keep their new sizes.
bool resize_vertices(trimesh* mesh, int32_t capacity) {
    for (const auto array : vertex_arrays) {
        if (mesh->*array && !resize_tuples(mesh->*array, capacity, per_position)) return false;
    }
    for (int32_t set = 0; set < mesh->use_textures; ++set) {
        if (!resize_tuples(mesh->texcoords[set], capacity, per_texcoord)) return false;
    }
    return true;
}

bool grow_vertices(trimesh* mesh) {
    const int32_t capacity = doubled(mesh->vertex_capacity);
    if (capacity == 0 || !resize_vertices(mesh, capacity)) return false;
    mesh->vertex_capacity = capacity;
    return true;
}

bool grow_faces(trimesh* mesh) {
    const int32_t capacity = doubled(mesh->face_capacity);
    if (capacity == 0 || !resize_tuples(mesh->indices, capacity, per_position)) return false;
    mesh->face_capacity = capacity;
    return true;
}

template <size_t n> void put(float* array, int32_t index, const float (&values)[n]) {
    std::copy_n(values, n, array + static_cast<size_t>(index) * n);
}

} // namespace

int trimesh_create(trimesh* mesh, const char* name, int32_t nvertices, int32_t nfaces, int32_t nmaterials,
                   int32_t use_normals, int32_t use_textures, int32_t use_tangents, int32_t use_binormals) {
    *mesh = {};
    mat_identity(mesh->transform);
    mesh->name = heap_text(name);
    mesh->vertex_capacity = roomy(nvertices);
    mesh->face_capacity = roomy(nfaces);
    mesh->material_capacity = roomy(nmaterials);
    mesh->use_normals = use_normals;
    mesh->calc_normals = 1;
    mesh->use_tangents = use_tangents;
    mesh->use_binormals = use_binormals;
    if (mesh->vertex_capacity == 0 || mesh->face_capacity == 0 || mesh->material_capacity == 0) return 0;

    if (!resize_tuples(mesh->vertices, mesh->vertex_capacity, per_position)) return 0;
    if (!heap_resize(mesh->materials, static_cast<size_t>(mesh->material_capacity))) return 0;
    const struct {
        int32_t wanted;
        float* trimesh::*array;
    } optional[] = {{use_normals, &trimesh::normals},
                    {use_tangents, &trimesh::tangents},
                    {use_binormals, &trimesh::binormals}};
    for (const auto& [wanted, array] : optional) {
        if (wanted && !resize_tuples(mesh->*array, mesh->vertex_capacity, per_position)) return 0;
    }
    if (use_textures > 0) {
        mesh->texcoords = static_cast<float**>(calloc(static_cast<size_t>(use_textures), sizeof(float*)));
        if (!mesh->texcoords) return 0;
        mesh->use_textures = use_textures;
        for (int32_t set = 0; set < use_textures; ++set) {
            if (!resize_tuples(mesh->texcoords[set], mesh->vertex_capacity, per_texcoord)) return 0;
        }
    }
    return resize_tuples(mesh->indices, mesh->face_capacity, per_position);
}

int trimesh_pushvertex(trimesh* mesh, float x, float y, float z) {
    if (mesh->nvertices >= mesh->vertex_capacity && !grow_vertices(mesh)) return 0;
    const int32_t vertex = mesh->nvertices++;
    put(mesh->vertices, vertex, {x, y, z});
    // Everything a vertex may never be given is 0, so that no stray memory reaches the GPU or a file.
    for (const auto array : vertex_arrays) {
        if (array != &trimesh::vertices && mesh->*array) put(mesh->*array, vertex, {0.0f, 0.0f, 0.0f});
    }
    for (int32_t set = 0; set < mesh->use_textures; ++set) {
        put(mesh->texcoords[set], vertex, {0.0f, 0.0f});
    }
    return mesh->nvertices == mesh->vertex_capacity ? grow_vertices(mesh) : 1;
}

int trimesh_pushface(trimesh* mesh, uint32_t a, uint32_t b, uint32_t c) {
    if (mesh->nfaces >= mesh->face_capacity && !grow_faces(mesh)) return 0;
    uint32_t* face = mesh->indices + static_cast<size_t>(mesh->nfaces++) * 3;
    face[0] = a;
    face[1] = b;
    face[2] = c;
    return mesh->nfaces == mesh->face_capacity ? grow_faces(mesh) : 1;
}

int trimesh_pushmaterial(trimesh* mesh, material* m) {
    return trimesh_pushmaterialsegment(mesh, m, mesh->nfaces);
}

int trimesh_pushmaterialsegment(trimesh* mesh, material* m, int32_t start_index) {
    if (mesh->nmaterials >= mesh->material_capacity &&
        !heap_double(mesh->materials, mesh->material_capacity)) {
        return 0;
    }
    mesh->materials[mesh->nmaterials++] = {m, start_index};
    return mesh->nmaterials == mesh->material_capacity ? heap_double(mesh->materials, mesh->material_capacity)
                                                       : 1;
}

void trimesh_setnormal(trimesh* mesh, int32_t vertex, float x, float y, float z) {
    if (mesh->use_normals) put(mesh->normals, vertex, {x, y, z});
    mesh->calc_normals = 0;
}

void trimesh_settangent(trimesh* mesh, int32_t vertex, float x, float y, float z) {
    if (mesh->use_tangents) put(mesh->tangents, vertex, {x, y, z});
}

void trimesh_setbinormal(trimesh* mesh, int32_t vertex, float x, float y, float z) {
    if (mesh->use_binormals) put(mesh->binormals, vertex, {x, y, z});
}

void trimesh_settexcoord(trimesh* mesh, int32_t vertex, float u, float v) {
    trimesh_settexcoordn(mesh, 0, vertex, u, v);
}

void trimesh_settexcoordn(trimesh* mesh, int32_t set, int32_t vertex, float u, float v) {
    if (set >= 0 && set < mesh->use_textures) put(mesh->texcoords[set], vertex, {u, v});
}

void trimesh_setnormals(trimesh* mesh, const void* data, size_t size) {
    memcpy(mesh->normals, data, size);
    mesh->calc_normals = 0;
}

void trimesh_settangents(trimesh* mesh, const void* data, size_t size) {
    memcpy(mesh->tangents, data, size);
}

void trimesh_setbinormals(trimesh* mesh, const void* data, size_t size) {
    memcpy(mesh->binormals, data, size);
}

void trimesh_settexcoordsn(trimesh* mesh, int32_t set, const void* data, size_t size) {
    memcpy(mesh->texcoords[set], data, size);
}

void trimesh_trim(trimesh* mesh) {
    // An array that cannot be shrunk is merely larger than it need be.
    mesh->vertex_capacity = std::min(roomy(mesh->nvertices), mesh->vertex_capacity);
    resize_vertices(mesh, mesh->vertex_capacity);
    mesh->face_capacity = std::min(roomy(mesh->nfaces), mesh->face_capacity);
    resize_tuples(mesh->indices, mesh->face_capacity, per_position);
}

int32_t trimesh_segment_end(const trimesh* mesh, int32_t i) {
    return i + 1 < mesh->nmaterials ? mesh->materials[i + 1].startIndex : mesh->nfaces;
}

int trimesh_scaletexcoords(trimesh* mesh) {
    if (mesh->use_textures == 0 || mesh->nmaterials == 0 || mesh->nvertices == 0) return 1;
    // A vertex that several faces or segments share is scaled once: one bit a vertex.
    const heap_ptr<uint8_t> done{
        static_cast<uint8_t*>(calloc(static_cast<size_t>(mesh->nvertices) / 8 + 1, 1))};
    if (!done) return 0;

    float* const uv = mesh->texcoords[0];
    for (int32_t i = 0; i < mesh->nmaterials; ++i) {
        const texture* map = mesh->materials[i].material ? mesh->materials[i].material->diffuseMap : nullptr;
        if (!map) continue;
        const size_t end = static_cast<size_t>(trimesh_segment_end(mesh, i)) * 3;
        for (size_t j = static_cast<size_t>(mesh->materials[i].startIndex) * 3; j < end; ++j) {
            const size_t vertex = mesh->indices[j];
            const auto bit = static_cast<uint8_t>(1u << (vertex % 8));
            uint8_t& byte = done.get()[vertex / 8];
            if (byte & bit) continue;
            byte |= bit;
            uv[vertex * 2] *= map->scale_u;
            uv[vertex * 2 + 1] *= map->scale_v;
        }
    }
    return 1;
}

void trimesh_free(void* node) {
    auto* mesh = static_cast<trimesh*>(node);
    heap_clear(mesh->vertices);
    heap_clear(mesh->normals);
    if (mesh->texcoords) {
        for (int32_t set = 0; set < mesh->use_textures; ++set) {
            free(mesh->texcoords[set]);
        }
    }
    heap_clear(mesh->texcoords);
    heap_clear(mesh->indices);
    for (int32_t i = 0; i < mesh->nmaterials; ++i) {
        if (mesh->materials[i].material) material_free(mesh->materials[i].material);
    }
    mesh->nmaterials = 0;
    heap_clear(mesh->materials);
    heap_clear(mesh->tangents);
    heap_clear(mesh->binormals);
    heap_clear(mesh->name);
    trimesh_delete(mesh);
}
