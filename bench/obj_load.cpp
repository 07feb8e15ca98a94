// Loading of OBJ models, beside the loader that a user would otherwise pick. "bound" is the memory of the
// mesh's arrays and of the file's positions, normals and texture coordinates.

#include "models.h"

#ifdef HAVE_TINYOBJLOADER
#include <tiny_obj_loader.h>
#endif

namespace {

#ifdef HAVE_TINYOBJLOADER
constexpr bool has_other = true;

double other_load_time(const std::string& path) {
    tinyobj::attrib_t attributes;
    std::vector<tinyobj::shape_t> shapes;
    std::vector<tinyobj::material_t> materials;
    std::string warnings, errors;
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    return milliseconds([&] {
        if (!tinyobj::LoadObj(&attributes, &shapes, &materials, &warnings, &errors, path.c_str(),
                              folder.c_str()))
            abort();
    });
}
#else
constexpr bool has_other = false;

double other_load_time(const std::string&) {
    return 0;
}
#endif

// Times the two loaders by turns; prints them, and the ratio.
void print_times(const std::string& path) {
    const auto [load, other] =
        medians([&] { return load_time(path); }, [&] { return other_load_time(path); });
    printf(" %9.1f %9.2f", file_megabytes(path), load);
    if (has_other) {
        printf(" %13.2f %7.2f", other, other / load);
    } else {
        printf(" %13s %7s", "-", "-");
    }
}

} // namespace

int main() {
    printf("%9s %9s %9s %13s %7s %9s %9s\n", "triangles", "file MB", "load ms", "tinyobj ms", "ratio",
           "peak MB", "bound MB");
    for (const int64_t kilotriangles : {10, 1000}) {
        const std::string& path = all_models().sheet(kilotriangles);
        scene s;
        const double peak = peak_megabytes([&] { load_model(&s, path); });
        load_model(&s, path);
        const double bound = array_megabytes(s) + attribute_megabytes(kilotriangles);
        scene_free(&s);
        printf("%8dk", static_cast<int>(kilotriangles));
        print_times(path);
        printf(" %9.1f %9.1f\n", peak, bound);
    }
    for (const char* name : {"car", "gauge", "piston", "polyhedra", "shell"}) {
        printf("%9s", name);
        print_times(std::string(ASSETS "/") + name + "/" + name + ".obj");
        printf("\n");
    }
}
