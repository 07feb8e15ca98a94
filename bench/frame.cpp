// Frames in front of a GL that does nothing: drawing many segments of distinct materials, and bringing a
// model onto the screen.

#include "kora/host.h"

#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

// A folder of its own, removed at the end.
struct folder {
    std::string path = std::filesystem::temp_directory_path() / "model3d-bench-XXXXXX";
    folder() {
        if (!mkdtemp(path.data())) abort();
    }
    ~folder() { std::filesystem::remove_all(path); }
};

// Triangles that each have a material of their own.
std::string write_segments(const folder& in, int64_t count) {
    const std::string model = in.path + "/segments.obj";
    FILE* obj = fopen(model.c_str(), "w");
    FILE* mtl = fopen((in.path + "/segments.mtl").c_str(), "w");
    if (!obj || !mtl) abort();
    fputs("mtllib segments.mtl\n", obj);
    for (int64_t i = 0; i < count; i++) {
        const double x = static_cast<double>(i) / static_cast<double>(count);
        fprintf(mtl, "newmtl m%d\nKa %f 0 0\nKd 0 %f 0\nKs 0 0 %f\nNs %f\nd %f\n", static_cast<int>(i), x, x,
                x, 1 + 50 * x, 0.5 + x / 2);
        fprintf(obj, "v %f 0 0\nv %f 1 0\nv %f 0 1\nusemtl m%d\nf -3 -2 -1\n", x, x, x, static_cast<int>(i));
    }
    if (fclose(obj) != 0 || fclose(mtl) != 0) abort();
    return model;
}

// One control that shows a model.
struct shown {
    kora_app* app = kora_app_create();
    kora_control* control = nullptr;

    explicit shown(const std::string& model) {
        if (!app || !kora_app_load_plugin(app, PLUGIN_PATH, nullptr)) fail();
        control = kora_control_create(app, "", "model3d", 0, 0, 640, 480);
        if (!control || !kora_control_set(control, "filename", model.c_str()) ||
            !kora_control_set(control, "shading_model", "blinn-phong")) {
            fail();
        }
        kora_control_render(control);
    }
    ~shown() { kora_app_destroy(app); }
    void fail() const {
        fprintf(stderr, "%s\n", kora_app_error(app));
        exit(1);
    }
};

void frame(benchmark::State& state) {
    const folder files;
    const shown model(write_segments(files, state.range(0)));
    for (auto _ : state) {
        kora_control_render(model.control);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(frame)->Arg(1)->Arg(100)->Arg(1000)->Unit(benchmark::kMicrosecond);

// The model is dropped as when the context goes, loaded again and uploaded.
void load_and_upload(benchmark::State& state) {
    const folder files;
    const shown model(write_segments(files, state.range(0)));
    kora_log_set_level(0);
    for (auto _ : state) {
        kora_app_presleep(model.app);
        kora_control_render(model.control);
    }
    kora_log_set_level(2);
}
BENCHMARK(load_and_upload)->Arg(1000)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
