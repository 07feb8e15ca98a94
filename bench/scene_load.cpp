// Loading of scene files, beside reading the same bytes once into fresh memory and the OBJ file they were
// made from. The argument is the number of triangles in thousands; 1000 make files of about 100 MB. peak_MB
// is the memory that a load had at most, over what it found.

#include "loaders/group_obj.h"
#include "loaders/group_qel.h"
#include "models.h"
#include "scene/export.h"

#include <fstream>

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
    if (!load_model(group_loadobj, &s, model)) abort();
    write_scene(&s, path);
    scene_free(&s);
    return path;
}

// A line of the kernel's account of this process, in kB.
double process_status(const char* field) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        double number = 0;
        if (word == field && status >> number) return number;
    }
    return 0;
}

// Watches the memory of what runs in its life.
class peak {
  public:
    peak() {
        std::ofstream("/proc/self/clear_refs") << "5"; // the peak starts at what there is
        before = process_status("VmRSS:");
    }
    double megabytes() const { return (process_status("VmHWM:") - before) / 1024; }

  private:
    double before;
};

void read_once(benchmark::State& state) {
    const std::string path = scene_sheet(state.range(0));
    const size_t size = std::filesystem::file_size(path);
    for (auto _ : state) {
        FILE* const file = fopen(path.c_str(), "rb");
        void* const bytes = malloc(size);
        if (!file || !bytes || fread(bytes, 1, size, file) != size) state.SkipWithError("could not read");
        benchmark::DoNotOptimize(bytes);
        free(bytes);
        fclose(file);
    }
    set_bytes(state, path);
}
BENCHMARK(read_once)->Arg(10)->Arg(1000)->Unit(benchmark::kMillisecond);

void load(benchmark::State& state, loader load_file, const std::string& path) {
    const peak memory;
    for (auto _ : state) {
        scene s;
        if (!load_model(load_file, &s, path)) state.SkipWithError("could not load");
        scene_free(&s);
    }
    state.counters["peak_MB"] = memory.megabytes();
    set_bytes(state, path);
}

void scene_load(benchmark::State& state) {
    load(state, group_loadqel, scene_sheet(state.range(0)));
}
BENCHMARK(scene_load)->Arg(10)->Arg(1000)->Unit(benchmark::kMillisecond);

void obj_load(benchmark::State& state) {
    load(state, group_loadobj, all_models().sheet(state.range(0)));
}
BENCHMARK(obj_load)->Arg(10)->Arg(1000)->Unit(benchmark::kMillisecond);

} // namespace
