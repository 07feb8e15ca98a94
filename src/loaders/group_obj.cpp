#include "loaders/group_obj.h"

#include "base/heap.h"
#include "loaders/digits.h"
#include "loaders/flarray.h"
#include "loaders/line_reader.h"
#include "loaders/material_library.h"
#include "loaders/path.h"
#include "loaders/scan_float.h"
#include "scene/export.h"
#include "scene/trimesh.h"

#include <fcntl.h>

#include <cmath>

namespace {

// Indices from 0. What is not given, or does not exist, is no valid index.
struct obj_corner {
    int32_t position;
    int32_t texcoord;
    int32_t normal;
};

// A corner takes two bytes of its line at least, and no line has more than 1022.
constexpr int max_corners = 512;

// Lives for one call; zero-filled it holds nothing.
struct obj_loader {
    scene* target;
    load_context* context;
    const char* directory; // of the file, as it was named
    trimesh* mesh;         // belongs to the scene
    material_table materials;
    flarray positions; // x, y, z
    flarray normals;   // x, y, z
    flarray texcoords; // u, 1 - v: the format counts v upwards, images have their first row on top
    obj_corner corners[max_corners];
};

// -1 when the resource is not found or cannot be opened.
int open_resource(const char* name, load_context* context) {
    const heap_ptr<char> path{resource_locate(name, context)};
    return path ? open(path.get(), O_RDONLY | O_CLOEXEC) : -1;
}

// What handles a line passes over whatever it cannot make sense of. Where it returns false, memory ran out
// for something that cannot be left out, and the load has failed.

// A model may name libraries that are not there.
void read_library(obj_loader* loader, const char* name) {
    const heap_ptr<char> path{join_path(loader->directory, name)};
    if (!path) {
        loader->context->incomplete = true;
        return;
    }
    const int fd = open_resource(path.get(), loader->context);
    if (fd < 0) return;
    if (!read_material_library(fd, loader->directory, &loader->materials)) loader->context->incomplete = true;
}

bool use_material(obj_loader* loader, const char* name) {
    material* const named = material_table_find(&loader->materials, name);
    if (!named) return true;
    auto* copy = heap_array<material>(1);
    if (!copy) return false;
    named->used = 1;
    if (!material_copy(copy, named)) loader->context->incomplete = true;
    // There is a free slot: even when the list then fails to grow, the copy belongs to the mesh.
    return trimesh_pushmaterial(loader->mesh, copy);
}

// A stray position a thousand million times farther out than all before is no part of the model.
void grow_radius(float* radius, const float p[3]) {
    const float r = sqrtf(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]);
    if (r > *radius && (*radius == 0.0f || r / *radius < 1.0e9f)) *radius = r;
}

bool push_all(flarray* array, const float* values, int count) {
    const int32_t before = array->count;
    for (int i = 0; i < count; ++i) {
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
        if (scan_floats(line + 2, v, 3) < 3) return true;
        return push_all(&loader->normals, v, 3);
    case 't':
        if (scan_floats(line + 2, v, 2) < 2) return true;
        v[1] = 1.0f - v[1];
        return push_all(&loader->texcoords, v, 2);
    default:
        return true;
    }
}

// Reads a number up to the end of its field, where *p is left. Of the field only digits and minuses count,
// the first 63 of them; the number is what they begin with. One that is too large becomes the nearest there
// is.
int32_t read_field(const char** p) {
    char digits[64];
    size_t length = 0;
    for (; **p != '\0' && **p != ' ' && **p != '/'; ++*p) {
        if ((is_digit(**p) || **p == '-') && length < sizeof(digits) - 1) digits[length++] = **p;
    }
    digits[length] = '\0';
    const bool negative = digits[0] == '-';
    constexpr int64_t limit = int64_t{INT32_MAX} + 1;
    int64_t value = 0;
    for (const char* d = digits + negative; is_digit(*d) && value < limit; ++d) {
        value = value * 10 + (*d - '0');
    }
    if (negative) return static_cast<int32_t>(-(value < limit ? value : limit));
    return static_cast<int32_t>(value < limit ? value : limit - 1);
}

// From the file's count, which is from 1 or backwards from the end, to one from 0. 0 is not given.
int32_t resolve(int32_t index, int32_t count) {
    return index < 0 ? count + index : index - 1;
}

bool exists(int32_t index, int32_t count) {
    // One comparison: as unsigned numbers, those below 0 are larger than any count.
    return static_cast<uint32_t>(index) < static_cast<uint32_t>(count);
}

int32_t count_positions(const obj_loader* loader) {
    return loader->positions.count / 3;
}
int32_t count_texcoords(const obj_loader* loader) {
    return loader->texcoords.count / 2;
}
int32_t count_normals(const obj_loader* loader) {
    return loader->normals.count / 3;
}

// Reads a corner in any form, from its first digit or minus on, and returns the place after it. *valid:
// the corner has a position.
const char* read_any_corner(const obj_loader* loader, const char* p, obj_corner* corner, bool* valid) {
    int32_t fields[3] = {};
    for (int i = 0; i < 3; ++i) {
        fields[i] = read_field(&p);
        if (*p != '/') break;
        ++p; // behind the third field, even an empty one, the next corner may follow at once
    }
    *corner = {resolve(fields[0], count_positions(loader)), resolve(fields[1], count_texcoords(loader)),
               resolve(fields[2], count_normals(loader))};
    *valid = fields[0] != 0;
    return p;
}

// The same for one to three fields of plain digits, which is what files are full of.
inline const char* read_corner(const obj_loader* loader, const char* begin, obj_corner* corner, bool* valid) {
    const digit_run position = find_digits(begin);
    digit_run texcoord = {};
    digit_run normal = {};
    const char* p = begin + position.bits / 8;
    if (*p == '/') {
        texcoord = find_digits(++p);
        p += texcoord.bits / 8;
        if (*p == '/') {
            normal = find_digits(++p);
            p += normal.bits / 8;
        }
    }
    if (*p != ' ' && *p != '\0') return read_any_corner(loader, begin, corner, valid);
    const uint32_t number = whole_number(position);
    *corner = {static_cast<int32_t>(number) - 1, static_cast<int32_t>(whole_number(texcoord)) - 1,
               static_cast<int32_t>(whole_number(normal)) - 1};
    *valid = number != 0;
    return p;
}

// Reads a face's corners into the loader, from behind its keyword on, and returns how many count: there are
// as many corners as runs of spaces, whatever else is on the line. 0: the face does not count.
int read_corners(obj_loader* loader, const char* p) {
    int runs = 0;
    int count = 0;
    int valid_count = 0; // up to the first corner without a position
    for (;;) {
        if (*p == ' ') {
            ++runs;
            do {
                ++p;
            } while (*p == ' ');
        }
        if (!is_digit(*p) && *p != '-') {
            // Nothing but a space divides, and anything may stand before a number.
            if (*p++) continue;
            return runs < 3 || valid_count < runs ? 0 : runs;
        }
        if (count == max_corners) return 0;
        bool valid = false;
        p = read_corner(loader, p, &loader->corners[count], &valid);
        valid_count += (valid && valid_count == count) ? 1 : 0;
        ++count;
    }
}

const float* element(const flarray& array, int32_t index, int32_t size) {
    return array.data + static_cast<size_t>(index) * static_cast<size_t>(size);
}

// Appends a vertex; false when memory ran out.
bool push_vertex(trimesh* mesh, const float position[3], const float texcoord[2], const float normal[3]) {
    const auto vertex = static_cast<size_t>(mesh->nvertices);
    if (mesh->nvertices + 1 < mesh->vertex_capacity) {
        memcpy(mesh->vertices + vertex * 3, position, 3 * sizeof(float));
        ++mesh->nvertices;
    } else if (!trimesh_pushvertex(mesh, position[0], position[1], position[2])) {
        return false;
    }
    memcpy(mesh->texcoords[0] + vertex * 2, texcoord, 2 * sizeof(float));
    memcpy(mesh->normals + vertex * 3, normal, 3 * sizeof(float));
    return true;
}

// A fan around the first corner. Only that vertex is shared by its triangles; no other vertex is.
bool add_face(obj_loader* loader, const char* line) {
    const int count = read_corners(loader, line + 1);
    if (count == 0) return true;
    const int32_t npositions = count_positions(loader);
    const int32_t ntexcoords = count_texcoords(loader);
    const int32_t nnormals = count_normals(loader);
    trimesh* const mesh = loader->mesh;
    static constexpr float none[3] = {};
    const auto push = [loader, mesh](const obj_corner& c, bool has_texcoord, bool has_normal) {
        return push_vertex(mesh, element(loader->positions, c.position, 3),
                           has_texcoord ? element(loader->texcoords, c.texcoord, 2) : none,
                           has_normal ? element(loader->normals, c.normal, 3) : none);
    };

    const obj_corner& a = loader->corners[0];
    if (!exists(a.position, npositions)) return true;
    const auto first = static_cast<uint32_t>(mesh->nvertices);
    if (!push(a, false, false)) return false;
    for (int k = 1; k + 1 < count; ++k) {
        const obj_corner& b = loader->corners[k];
        const obj_corner& c = loader->corners[k + 1];
        if (!exists(b.position, npositions) || !exists(c.position, npositions)) break;
        // What one corner lacks the other two do not get either.
        const bool has_texcoords = exists(a.texcoord, ntexcoords) && exists(b.texcoord, ntexcoords) &&
                                   exists(c.texcoord, ntexcoords);
        const bool has_normals =
            exists(a.normal, nnormals) && exists(b.normal, nnormals) && exists(c.normal, nnormals);
        if (has_texcoords) {
            memcpy(mesh->texcoords[0] + size_t{first} * 2, element(loader->texcoords, a.texcoord, 2),
                   2 * sizeof(float));
        }
        if (has_normals) {
            memcpy(mesh->normals + size_t{first} * 3, element(loader->normals, a.normal, 3),
                   3 * sizeof(float));
            mesh->calc_normals = 0;
        }
        const auto second = static_cast<uint32_t>(mesh->nvertices);
        if (!push(b, has_texcoords, has_normals) || !push(c, has_texcoords, has_normals) ||
            !trimesh_pushface(mesh, first, second, second + 1)) {
            return false;
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
        if (strncmp(line, "mtllib", 6) == 0) read_library(loader, keyword_rest(line));
        return true;
    case 'u':
        if (strncmp(line, "usemtl", 6) == 0) return use_material(loader, keyword_rest(line));
        return true;
    default:
        return true;
    }
}

// Reads the whole file into the scene's mesh. False when memory ran out.
bool read_model(obj_loader* loader, line_reader* reader) {
    bool ok = flarray_create(&loader->positions) && flarray_create(&loader->normals) &&
              flarray_create(&loader->texcoords);
    while (ok) {
        const char* line = line_reader_next(reader);
        if (!line) break;
        ok = handle_line(loader, line);
    }
    material_table_free(&loader->materials);
    flarray_free(&loader->texcoords);
    flarray_free(&loader->normals);
    flarray_free(&loader->positions);
    trimesh_trim(loader->mesh);
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
                              trimesh_export, trimesh_free)) {
        return true;
    }
    if (!created || s->root.nnodes == 0) {
        trimesh_free(mesh);
        free(mesh);
    }
    scene_free(s);
    return false;
}

bool load(scene* s, const char* filename, load_context* context) {
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

int group_loadobj(scene* s, const char* filename, load_context* context) {
    if (load(s, filename, context)) return 1;
    *s = {};
    return 0;
}
