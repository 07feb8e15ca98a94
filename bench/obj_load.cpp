// Loading of OBJ models, beside the loader that a user would otherwise pick, and normals of large meshes.
// The argument is the number of triangles in thousands; 1000 make a file of about 100 MB.

#include "loaders/group_obj.h"
#include "models.h"
#include "scene/trimesh.h"

#ifdef HAVE_TINYOBJLOADER
#include <tiny_obj_loader.h>
#endif

namespace {

void obj_load(benchmark::State& state) {
    const std::string& path = all_models().sheet(state.range(0));
    for (auto _ : state) {
        scene s;
        if (!load_model(group_loadobj, &s, path)) state.SkipWithError("could not load");
        scene_free(&s);
    }
    set_bytes(state, path);
}
BENCHMARK(obj_load)->Arg(10)->Arg(1000)->Unit(benchmark::kMillisecond);

#ifdef HAVE_TINYOBJLOADER
void obj_load_tinyobjloader(benchmark::State& state) {
    const std::string& path = all_models().sheet(state.range(0));
    for (auto _ : state) {
        tinyobj::attrib_t attributes;
        std::vector<tinyobj::shape_t> shapes;
        std::vector<tinyobj::material_t> materials;
        std::string warnings, errors;
        if (!tinyobj::LoadObj(&attributes, &shapes, &materials, &warnings, &errors, path.c_str())) {
            state.SkipWithError("could not load");
        }
    }
    set_bytes(state, path);
}
BENCHMARK(obj_load_tinyobjloader)->Arg(10)->Arg(1000)->Unit(benchmark::kMillisecond);
#endif

void normals(benchmark::State& state) {
    scene s;
    if (!load_model(group_loadobj, &s, all_models().sheet(state.range(0)))) {
        state.SkipWithError("could not load");
        return;
    }
    auto* mesh = static_cast<trimesh*>(s.root.nodes[0].node);
    for (auto _ : state) {
        mesh->calc_normals = 1;
        trimesh_calculatenormals(mesh);
    }
    state.SetItemsProcessed(state.iterations() * mesh->nvertices);
    scene_free(&s);
}
BENCHMARK(normals)->Arg(10)->Arg(1000)->Unit(benchmark::kMillisecond);

} // namespace
