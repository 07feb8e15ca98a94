// Loading of scene files, beside reading the same bytes once into fresh memory and the OBJ file they were
// made from. "arrays" is the memory of the mesh's arrays.

#include "loaders/group_obj.h"
#include "loaders/group_qel.h"
#include "models.h"
#include "scene/export.h"

namespace {

void write_scene(scene* s, const std::string& path) {
    QELF_Node* const root = group_export(&s->root);
    if (!root) abort();
    QELF_Scene* const made = QELF_createScene("QELF");
    made->sceneHeader = QELF_createSceneHeader();
    made->sceneHeader->versionMajor = 2;
    QELF_addSceneGroupToScene(made, static_cast<QELF_SceneGroup*>(root->content));
    IFF_Form* const form = QELF_convertSceneToForm(made);
    if (!form || !QELF_write(path.c_str(), &form->chunk)) abort();
    QELF_freeScene(made);
    QELF_free(&form->chunk);
    free(root);
}

// The sheet as a scene file, which the first use makes.
std::string scene_sheet(int64_t kilotriangles) {
    const std::string& model = all_models().sheet(kilotriangles);
    const std::string path = model + ".qel";
    if (std::filesystem::exists(path)) return path;
    scene s;
    load_model(group_loadobj, &s, model);
    write_scene(&s, path);
    scene_free(&s);
    return path;
}

double read_time(const std::string& path) {
    const size_t size = std::filesystem::file_size(path);
    return milliseconds([&] {
        FILE* const file = fopen(path.c_str(), "rb");
        void* const bytes = malloc(size);
        if (!file || !bytes || fread(bytes, 1, size, file) != size) abort();
        fclose(file);
        free(bytes);
    });
}

} // namespace

int main() {
    printf("%9s %9s %9s %9s %9s %9s %9s %9s %9s\n", "triangles", "file MB", "read ms", "load ms", "load/read",
           "obj ms", "obj/load", "peak MB", "arrays MB");
    for (const int64_t kilotriangles : {10, 1000}) {
        const std::string path = scene_sheet(kilotriangles);
        const auto [read, load, obj] =
            medians([&] { return read_time(path); }, [&] { return load_time(group_loadqel, path); },
                    [&] { return load_time(group_loadobj, all_models().sheet(kilotriangles)); });
        scene s;
        const double peak = peak_megabytes([&] { load_model(group_loadqel, &s, path); });
        load_model(group_loadqel, &s, path);
        printf("%8dk %9.1f %9.2f %9.2f %9.2f %9.2f %9.2f %9.1f %9.1f\n", static_cast<int>(kilotriangles),
               file_megabytes(path), read, load, load / read, obj, obj / load, peak, array_megabytes(s));
        scene_free(&s);
    }
}
