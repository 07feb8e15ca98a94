// One workload, once, for counting its instructions: `workload NAME SIZE`. What is counted runs inside
// measured(); see instructions.py.
//   obj, scene   load a model of SIZE thousand triangles
//   frame        draw SIZE segments of distinct materials a second time
//   calls        the GL calls of those segments, by hand
//   lines        the same and their lines in the host's log
//   dirty        check SIZE groups whose nine values each are bound and unchanged
//   lookups      find those values in the host's data manager
//   materials, colliding-materials
//                load a model that defines and uses 2^SIZE materials, whose names are ordinary or have one
//                hash
//   keys, colliding-keys
//                set and find 2^SIZE such keys in a string map and in the data manager of the host
//   libraries, same-library
//                load a model that names a library of 2^SIZE materials, and as often one that is not there,
//                or the same once more

#include "colliding_names.h"
#include "models.h"
#include "shown.h"

#include <fstream>
#include <functional>

namespace {

extern "C" __attribute__((noinline)) void measured(const std::function<void()>& work) {
    work();
}

void load(const std::string& path) {
    scene s;
    measured([&] { load_model(&s, path); });
    scene_free(&s);
}

void load_texts(const std::string& model, const std::string& library) {
    const folder files;
    const std::string path = files.path + "/model.obj";
    std::ofstream(path) << model;
    std::ofstream(files.path + "/library.mtl") << library;
    load(path);
}

void use_materials(int size, bool colliding) {
    std::string model = "mtllib library.mtl\n", library;
    for (const std::string& name : make_names(size, one_at_a_time_step, 0, colliding)) {
        library += "newmtl " + name + "\n";
        model += "usemtl " + name + "\n";
    }
    load_texts(model, library);
}

void use_keys(int size, bool colliding) {
    const std::vector<std::string> keys = make_names(size, fnv_1a_step, 2166136261u, colliding);
    kora_app* const app = kora_app_create();
    measured([&] {
        kor_string_map* const map = kor_string_map_create(0);
        for (const std::string& key : keys) {
            kor_string_map_set(map, key.c_str(), app);
            kora_app_set_data(app, key.c_str(), 1);
        }
        data_manager* const data = kora_app_record(app)->services->data;
        for (const std::string& key : keys) {
            if (!kor_string_map_get(map, key.c_str()) || !data->get(data, key.c_str(), 0)) abort();
        }
        kor_string_map_destroy(map, nullptr, nullptr);
    });
    kora_app_destroy(app);
}

void name_libraries(int size, const std::string& other) {
    std::string model = "mtllib library.mtl\n", library;
    for (int i = 0; i < 1 << size; ++i) {
        library += "newmtl material " + std::to_string(i) + "\n";
        model += "mtllib " + other + "\n";
    }
    load_texts(model, library);
}

} // namespace

int main(int argc, char** argv) {
    const std::string name = argc == 3 ? argv[1] : "";
    const int size = argc == 3 ? atoi(argv[2]) : 0;
    if (name == "obj") {
        load(all_models().sheet(size));
    } else if (name == "scene") {
        load(all_models().scene_sheet(size));
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
    } else if (name == "materials" || name == "colliding-materials") {
        use_materials(size, name != "materials");
    } else if (name == "keys" || name == "colliding-keys") {
        use_keys(size, name != "keys");
    } else if (name == "libraries" || name == "same-library") {
        name_libraries(size, name == "libraries" ? "missing.mtl" : "library.mtl");
    } else {
        fprintf(stderr, "usage: %s WORKLOAD SIZE\n", argv[0]);
        return 2;
    }
    return 0;
}
