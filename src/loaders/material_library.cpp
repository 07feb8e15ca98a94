#include "loaders/material_library.h"

#include "base/heap.h"
#include "loaders/line_reader.h"
#include "loaders/path.h"
#include "loaders/scan_float.h"

#include <unistd.h>

namespace {

// A line belongs to the first of these keywords that it begins with: "dissolve 1" to "d", which then does
// nothing because no number follows.
struct number_line {
    char keyword[3];
    int length;
    int count;
    float* (*target)(material*);
};

constexpr number_line number_lines[] = {
    {"d", 1, 1, [](material* m) { return &m->alpha; }},
    {"Ka", 2, 3, [](material* m) { return m->ambient; }},
    {"Kd", 2, 3, [](material* m) { return m->diffuse; }},
    {"Ks", 2, 3, [](material* m) { return m->specular; }},
    {"Ns", 2, 1, [](material* m) { return &m->spec_exp; }},
};

// Null when memory ran out.
material* add_material(material_table* materials, const char* name) {
    auto* m = heap_array<material>(1);
    if (!m) return nullptr;
    material_create(m, name);
    if (m->name && material_table_define(materials, m)) return m;
    material_free(m);
    return nullptr;
}

enum class map_result { set, none, no_record };

map_result set_diffuse_map(material* m, const char* directory, const char* name) {
    auto* map = heap_array<texture>(1);
    if (!map) return map_result::no_record;
    if (m->diffuseMap) texture_free(m->diffuseMap);
    m->diffuseMap = map;
    if (texture_create_beside(map, directory, name)) return map_result::set;
    free(map);
    m->diffuseMap = nullptr;
    return map_result::none;
}

} // namespace

bool read_material_library(int fd, const char* directory, material_table* materials) {
    const library_use use = material_table_name_library(materials, fd);
    if (use != library_use::is_new) {
        close(fd);
        return use == library_use::is_known;
    }
    line_reader reader;
    if (!line_reader_create(&reader, fd, backslash_plain)) return false;
    material* current = nullptr;
    bool complete = true;
    while (const char* line = line_reader_next(&reader)) {
        if (strncmp(line, "newmtl", 6) == 0) {
            current = add_material(materials, line[6] == ' ' ? line + 7 : "");
            if (current) continue;
            complete = false;
            break;
        }
        // Nothing to apply to before the first material.
        if (!current) continue;
        if (strncmp(line, "map_Kd", 6) == 0) {
            const char* name = keyword_rest(line);
            const map_result map = *name ? set_diffuse_map(current, directory, name) : map_result::set;
            if (map != map_result::set) complete = false;
            if (map == map_result::no_record) break;
            continue;
        }
        for (const number_line& kind : number_lines) {
            const auto length = static_cast<size_t>(kind.length);
            if (strncmp(line, kind.keyword, length) != 0) continue;
            float values[3];
            if (scan_floats(line + length, values, kind.count) == kind.count) {
                memcpy(kind.target(current), values, sizeof(float) * static_cast<size_t>(kind.count));
            }
            break;
        }
    }
    line_reader_free(&reader);
    return complete;
}
