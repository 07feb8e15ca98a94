// One workload, once, for counting its instructions: `workload NAME SIZE`. What is counted runs inside
// measured(); see instructions.py.
//   obj, scene   load a model of SIZE thousand triangles
//   frame        draw SIZE segments of distinct materials a second time
//   calls        the GL calls of those segments, by hand
//   lines        the same and their lines in the host's log
//   dirty        check SIZE groups whose nine values each are bound and unchanged
//   lookups      find those values in the host's data manager

#include "loaders/group_qel.h"
#include "models.h"
#include "shown.h"

#include <functional>

namespace {

extern "C" __attribute__((noinline)) void measured(const std::function<void()>& work) {
    work();
}

void load(loader load_file, const std::string& path) {
    scene s;
    measured([&] { load_model(load_file, &s, path); });
    scene_free(&s);
}

} // namespace

int main(int argc, char** argv) {
    const std::string name = argc == 3 ? argv[1] : "";
    const int size = argc == 3 ? atoi(argv[2]) : 0;
    if (name == "obj") {
        load(group_loadobj, all_models().sheet(size));
    } else if (name == "scene") {
        load(group_loadqel, all_models().scene_sheet(size));
    } else if (name == "frame") {
        const folder files;
        const shown model(write_segments(files, size));
        kora_control_render(model.control);
        measured([&] { kora_control_render(model.control); });
    } else if (name == "calls") {
        const segment_calls calls(size);
        measured([&] { calls.draw<false>(); });
    } else if (name == "lines") {
        const segment_calls calls(size);
        measured([&] { calls.draw<true>(); });
    } else if (name == "dirty") {
        const bound_groups groups(size);
        measured([&] { groups.check(); });
    } else if (name == "lookups") {
        const bound_groups groups(size);
        measured([&] { groups.look_up(); });
    } else {
        fprintf(stderr, "usage: %s obj|scene|frame|calls|lines|dirty|lookups SIZE\n", argv[0]);
        return 2;
    }
    return 0;
}
