#include "loaders/group_obj.h"

#include "base/heap.h"
#include "loaders/flarray.h"
#include "loaders/hashtable.h"
#include "loaders/line_reader.h"
#include "loaders/material_library.h"
#include "loaders/scan_float.h"
#include "scene/material.h"
#include "scene/trimesh.h"

#include <cmath>
#include <fcntl.h>

namespace {

// Indices as the file gives them, 0: not given; once resolved they count from 0, and what is not given
// or does not exist is no valid index.
struct obj_corner {
    int32_t position;
    int32_t texcoord;
    int32_t normal;
};

// A corner takes two bytes of its line at least.
constexpr int max_corners = 512;

// Lives for one call.
struct obj_loader {
    scene* target;
    render_context* context;
    const char* directory; // of the file, as it was named
    trimesh* mesh;         // belongs to the scene
    hashtable materials;
    flarray positions; // x, y, z
    flarray normals;   // x, y, z
    flarray texcoords; // u, 1 - v: the format counts v upwards, images have their first row on top
    obj_corner corners[max_corners];
};

// -1 when the resource is not found or cannot be opened.
int open_resource(const char* name, render_context* context) {
    const heap_ptr<char> path{resource_locate(name, context)};
    return path ? open(path.get(), O_RDONLY | O_CLOEXEC) : -1;
}

// The handlers of lines return false when memory ran out, which ends the load. Whatever they cannot make
// sense of they pass over.

bool read_library(obj_loader* loader, const char* name) {
    const heap_ptr<char> path{join_path(loader->directory, name)};
    const int fd = path ? open_resource(path.get(), loader->context) : -1;
    if (fd >= 0) read_material_library(fd, loader->directory, &loader->materials);
    return true;
}

bool use_material(obj_loader* loader, const char* name) {
    auto* named = static_cast<material*>(hashtable_get(&loader->materials, name));
    if (!named) return true;
    auto* copy = heap_array<material>(1);
    if (!copy) return false;
    named->used = 1;
    material_copy(copy, named);
    const int32_t segments = loader->mesh->nmaterials;
    if (trimesh_pushmaterial(loader->mesh, copy)) return true;
    if (loader->mesh->nmaterials == segments) material_free(copy);
    return false;
}

// A stray position a thousand million times farther out than all before is no part of the model.
void grow_radius(float* radius, const float p[3]) {
    const float r = sqrtf(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]);
    if (r > *radius && (*radius == 0.0f || r / *radius < 1.0e9f)) *radius = r;
}

bool push_all(flarray* array, const float* values, int count) {
    const int32_t before = array->count;
    for (int i = 0; i < count; i++) {
        flarray_push(array, values[i]);
    }
    return array->count == before + count;
}

bool add_attribute(obj_loader* loader, const char* line) {
    float v[3];
    switch (line[1]) {
    case ' ':
        if (scan_floats(line + 1, v, 3) < 3) return true;
        grow_radius(&loader->target->root.radius, v);
        return push_all(&loader->positions, v, 3);
    case 'n':
        return scan_floats(line + 2, v, 3) < 3 || push_all(&loader->normals, v, 3);
    case 't':
        if (scan_floats(line + 2, v, 2) < 2) return true;
        v[1] = 1.0f - v[1];
        return push_all(&loader->texcoords, v, 2);
    default:
        return true;
    }
}

bool is_digit(char c) {
    return static_cast<unsigned char>(c - '0') < 10;
}

bool ends_field(char c) {
    return c == '\0' || c == ' ' || c == '/';
}

// A field with anything but a plain number in it: what is not a digit or a minus does not count, the
// first 63 others do, and the number ends where they stop being one. It saturates.
int32_t odd_field(const char* p) {
    char digits[64];
    size_t length = 0;
    for (; !ends_field(*p); p++) {
        if ((is_digit(*p) || *p == '-') && length < sizeof(digits) - 1) digits[length++] = *p;
    }
    digits[length] = '\0';
    const bool negative = digits[0] == '-';
    constexpr int64_t limit = int64_t{INT32_MAX} + 1;
    int64_t value = 0;
    for (const char* d = digits + negative; is_digit(*d) && value < limit; d++) {
        value = value * 10 + (*d - '0');
    }
    if (negative) return static_cast<int32_t>(-(value < limit ? value : limit));
    return static_cast<int32_t>(value < limit ? value : limit - 1);
}

// Reads up to the end of the field, where *p is left.
inline int32_t read_field(const char** p) {
    const char* q = *p;
    const bool negative = *q == '-';
    q += negative;
    const char* const begin = q;
    uint32_t value = 0;
    while (is_digit(*q)) {
        value = value * 10 + static_cast<uint32_t>(*q++ - '0');
    }
    if (ends_field(*q) && q - begin <= 9) {
        *p = q;
        return negative ? -static_cast<int32_t>(value) : static_cast<int32_t>(value);
    }
    const int32_t odd = odd_field(*p);
    while (!ends_field(*q)) {
        q++;
    }
    *p = q;
    return odd;
}

// Reads a face's corners into the loader and returns how many count, or 0 for a face that is to be
// dropped. There are as many corners as there are runs of spaces, whatever else is on the line.
int read_corners(obj_loader* loader, const char* p) {
    int runs = 0;
    int count = 0;
    while (*p) {
        // Nothing but spaces divides, and anything may stand before a number.
        while (*p && !is_digit(*p) && *p != '-') {
            if (*p == ' ' && p[-1] != ' ') runs++;
            p++;
        }
        if (!*p || count == max_corners) break;
        obj_corner corner = {};
        corner.position = read_field(&p);
        if (*p == '/') {
            p++;
            corner.texcoord = read_field(&p);
            if (*p == '/') {
                p++;
                corner.normal = read_field(&p);
                // The next corner may follow at once.
                if (*p == '/') p++;
            }
        }
        loader->corners[count++] = corner;
    }
    if (runs < 3 || count < runs) return 0;
    for (int i = 0; i < runs; i++) {
        if (loader->corners[i].position == 0) return 0;
    }
    return runs;
}

// From the file's count from 1, or backwards from the end, to one from 0.
int32_t resolve(int32_t index, int32_t count) {
    return index > 0 ? index - 1 : index < 0 ? count + index : -1;
}

bool exists(int32_t index, int32_t count) {
    return static_cast<uint32_t>(index) < static_cast<uint32_t>(count);
}

bool push_position(obj_loader* loader, const obj_corner& corner) {
    const float* const p = loader->positions.data + static_cast<size_t>(corner.position) * 3;
    return trimesh_pushvertex(loader->mesh, p[0], p[1], p[2]);
}

// A fan around the first corner. Only that vertex is shared by its triangles; no other vertex is.
bool add_face(obj_loader* loader, const char* line) {
    const int count = read_corners(loader, line);
    if (count == 0) return true;
    const int32_t npositions = loader->positions.count / 3;
    const int32_t ntexcoords = loader->texcoords.count / 2;
    const int32_t nnormals = loader->normals.count / 3;
    for (int i = 0; i < count; i++) {
        obj_corner& corner = loader->corners[i];
        corner.position = resolve(corner.position, npositions);
        corner.texcoord = resolve(corner.texcoord, ntexcoords);
        corner.normal = resolve(corner.normal, nnormals);
    }

    trimesh* const mesh = loader->mesh;
    const obj_corner& first = loader->corners[0];
    if (!exists(first.position, npositions)) return true;
    if (!push_position(loader, first)) return false;
    const int32_t first_vertex = mesh->nvertices - 1;
    for (int k = 1; k + 1 < count; k++) {
        const obj_corner* const corners[] = {&first, &loader->corners[k], &loader->corners[k + 1]};
        if (!exists(corners[1]->position, npositions) || !exists(corners[2]->position, npositions)) break;
        if (!push_position(loader, *corners[1]) || !push_position(loader, *corners[2])) return false;
        const int32_t vertices[] = {first_vertex, mesh->nvertices - 2, mesh->nvertices - 1};
        if (!trimesh_pushface(mesh, static_cast<uint32_t>(vertices[0]), static_cast<uint32_t>(vertices[1]),
                              static_cast<uint32_t>(vertices[2]))) {
            return false;
        }
        bool has_texcoords = true;
        bool has_normals = true;
        for (const obj_corner* corner : corners) {
            has_texcoords &= exists(corner->texcoord, ntexcoords);
            has_normals &= exists(corner->normal, nnormals);
        }
        for (int i = 0; i < 3 && has_texcoords; i++) {
            const float* const uv = loader->texcoords.data + static_cast<size_t>(corners[i]->texcoord) * 2;
            trimesh_settexcoord(mesh, vertices[i], uv[0], uv[1]);
        }
        for (int i = 0; i < 3 && has_normals; i++) {
            const float* const n = loader->normals.data + static_cast<size_t>(corners[i]->normal) * 3;
            trimesh_setnormal(mesh, vertices[i], n[0], n[1], n[2]);
        }
    }
    return true;
}

bool handle_line(obj_loader* loader, const char* line) {
    switch (line[0]) {
    case 'v':
        return add_attribute(loader, line);
    case 'f':
        return add_face(loader, line);
    case 'm':
        return strncmp(line, "mtllib", 6) != 0 || read_library(loader, keyword_rest(line));
    case 'u':
        return strncmp(line, "usemtl", 6) != 0 || use_material(loader, keyword_rest(line));
    default:
        return true;
    }
}

// Reads the whole file into the scene's mesh. False when memory ran out.
bool read_model(obj_loader* loader, line_reader* reader) {
    hashtable_create(&loader->materials, 8);
    bool ok = flarray_create(&loader->positions) & flarray_create(&loader->normals) &
              flarray_create(&loader->texcoords);
    while (ok) {
        const char* line = line_reader_next(reader);
        if (!line) break;
        ok = handle_line(loader, line);
    }
    hashtable_free(&loader->materials, freematerial);
    flarray_free(&loader->texcoords);
    flarray_free(&loader->normals);
    flarray_free(&loader->positions);
    return ok;
}

// The mesh that a model is read into, with its name; null when memory ran out.
trimesh* create_mesh(const char* filename) {
    auto* mesh = heap_array<trimesh>(1);
    if (!mesh) return nullptr;
    if (trimesh_create(mesh, filename, 4096, 8192, 2, 1, 1, 0, 0) && mesh->name) return mesh;
    trimesh_free(mesh);
    free(mesh);
    return nullptr;
}

// A scene with the mesh as its only node, which then belongs to it. On failure both are released.
bool create_scene(scene* s, trimesh* mesh) {
    const bool created = scene_create(s);
    if (created && group_push(&s->root, mesh, trimesh_load, trimesh_config, trimesh_prerender, trimesh_render,
                              nullptr, trimesh_free)) {
        return true;
    }
    if (!created || s->root.nnodes == 0) {
        trimesh_free(mesh);
        free(mesh);
    }
    scene_free(s);
    return false;
}

// Up to the last "/", which a model in the root directory has nothing before.
char* directory_of(const char* filename) {
    const char* const slash = strrchr(filename, '/');
    return slash ? strndup(filename, static_cast<size_t>(slash - filename)) : heap_text("./");
}

bool load(scene* s, const char* filename, render_context* context) {
    const int fd = open_resource(filename, context);
    line_reader reader;
    if (fd < 0 || !line_reader_create(&reader, fd, backslash_continues)) return false;
    const heap_ptr<obj_loader> loader{heap_zeroed<obj_loader>()};
    const heap_ptr<char> directory{directory_of(filename)};
    trimesh* mesh = loader && directory ? create_mesh(filename) : nullptr;
    bool ok = mesh && create_scene(s, mesh);
    if (ok) {
        loader->target = s;
        loader->context = context;
        loader->directory = directory.get();
        loader->mesh = mesh;
        ok = read_model(loader.get(), &reader);
        if (!ok) scene_free(s);
    }
    line_reader_free(&reader);
    return ok;
}

} // namespace

int group_loadobj(scene* s, const char* filename, render_context* context) {
    if (load(s, filename, context)) return 1;
    *s = {};
    return 0;
}
