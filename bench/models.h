// Models made once for all cases of a program, and a host to load them with.
#ifndef BENCH_MODELS_H
#define BENCH_MODELS_H

#include "base/heap.h"
#include "folder.h"
#include "loaders/load_scene.h"
#include "measure.h"
#include "scene/bindings.h"
#include "scene/export.h"
#include "scene/save.h"
#include "scene/scene.h"
#include "scene/trimesh.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>

// Squares along an edge of the sheet of so many thousand triangles.
inline int sheet_side(int64_t kilotriangles) {
    return static_cast<int>(std::sqrt(static_cast<double>(kilotriangles) * 500));
}

// A host that opens files by their names.
inline void load_model(scene* s, const std::string& path) {
    resource_manager resources = {};
    resources.resolve_path = [](resource_manager*, const char* name) { return strdup(name); };
    load_context context = {&resources, false};
    if (load_scene(s, path.c_str(), &context)) return;
    fprintf(stderr, "could not load %s\n", path.c_str());
    abort();
}

// Writes a tree as a scene file.
inline void write_scene(scene* s, const std::string& path) {
    if (!scene_save(&s->root, nullptr, 0, path.c_str())) abort();
}

// Groups named group0, group1, ... with nothing in them, as a scene file. Returns the path.
inline std::string write_groups(const std::string& path, int count) {
    scene s;
    if (!scene_create(&s)) abort();
    for (int i = 0; i < count; ++i) {
        auto* const g = heap_zeroed<group>();
        if (!g || !group_create(g, 1)) abort();
        g->name = strdup(("group" + std::to_string(i)).c_str());
        if (!group_push(&s.root, g, group_load, group_config, group_prerender, group_render, group_export,
                        group_free)) {
            abort();
        }
    }
    write_scene(&s, path);
    scene_free(&s);
    return path;
}

class models {
  public:
    // A wavy sheet with positions, texture coordinates and normals, as an OBJ file. The size is in thousands
    // of triangles; 1000 make about 100 MB. Returns its path.
    const std::string& sheet(int64_t kilotriangles) {
        std::string& path = paths[kilotriangles];
        if (!path.empty()) return path;
        path = files.path + "/sheet" + std::to_string(kilotriangles) + ".obj";
        const int n = sheet_side(kilotriangles);
        FILE* file = fopen(path.c_str(), "w");
        if (!file) abort();
        for (int i = 0; i < (n + 1) * (n + 1); ++i) {
            const int column = i % (n + 1), row = i / (n + 1);
            const double u = static_cast<double>(column) / n, v = static_cast<double>(row) / n;
            const double x = 2 * u - 1, y = 2 * v - 1, z = std::sin(9 * x) * std::cos(7 * y);
            fprintf(file, "v %.6f %.6f %.6f\nvt %.6f %.6f\n", x, y, z, u, v);
            const double dx = -9 * std::cos(9 * x) * std::cos(7 * y),
                         dy = 7 * std::sin(9 * x) * std::sin(7 * y);
            const double length = std::sqrt(dx * dx + dy * dy + 1);
            fprintf(file, "vn %.6f %.6f %.6f\n", dx / length, dy / length, 1 / length);
        }
        for (int i = 0; i < n * n; ++i) {
            const int a = i / n * (n + 1) + i % n + 1, b = a + 1, c = a + n + 1, d = c + 1;
            fprintf(file, "f %d/%d/%d %d/%d/%d %d/%d/%d\n", a, a, a, b, b, b, d, d, d);
            fprintf(file, "f %d/%d/%d %d/%d/%d %d/%d/%d\n", a, a, a, d, d, d, c, c, c);
        }
        if (fclose(file) != 0) abort();
        return path;
    }

    // The same as a scene file, which the first use makes.
    std::string scene_sheet(int64_t kilotriangles) {
        const std::string& model = sheet(kilotriangles);
        const std::string path = model + ".qel";
        if (std::filesystem::exists(path)) return path;
        scene s;
        load_model(&s, model);
        write_scene(&s, path);
        scene_free(&s);
        return path;
    }

  private:
    folder files;
    std::map<int64_t, std::string> paths;
};

inline models& all_models() {
    static models all;
    return all;
}

inline double file_megabytes(const std::string& path) {
    return static_cast<double>(std::filesystem::file_size(path)) / 1e6;
}

// Milliseconds that a load takes. What it loaded is released on other time.
inline double load_time(const std::string& path) {
    scene s;
    const double time = milliseconds([&] { load_model(&s, path); });
    scene_free(&s);
    return time;
}

// What the positions, texture coordinates and normals of a sheet's file hold, in MB.
inline double attribute_megabytes(int64_t kilotriangles) {
    const double points = sheet_side(kilotriangles) + 1;
    return points * points * 8 * sizeof(float) / 1e6;
}

// What the arrays of a loaded model of one mesh hold, in MB.
inline double array_megabytes(const scene& s) {
    const auto* mesh = static_cast<const trimesh*>(s.root.nodes[0].node);
    const int floats = 3 + (mesh->normals ? 3 : 0) + 2 * mesh->use_textures;
    return (4.0 * floats * mesh->nvertices + 12.0 * mesh->nfaces) / 1e6;
}

#endif
