// Loading of scene files, beside reading the same bytes once into fresh memory and the OBJ file they were
// made from. "arrays" is the memory of the mesh's arrays.

#include "models.h"

namespace {

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
        const std::string path = all_models().scene_sheet(kilotriangles);
        const auto [read, load, obj] =
            medians([&] { return read_time(path); }, [&] { return load_time(path); },
                    [&] { return load_time(all_models().sheet(kilotriangles)); });
        scene s;
        const double peak = peak_megabytes([&] { load_model(&s, path); });
        load_model(&s, path);
        printf("%8dk %9.1f %9.2f %9.2f %9.2f %9.2f %9.2f %9.1f %9.1f\n", static_cast<int>(kilotriangles),
               file_megabytes(path), read, load, load / read, obj, obj / load, peak, array_megabytes(s));
        scene_free(&s);
    }
}
