#include "loader_host.h"

#include "obj_reference.h"
#include "scene/material.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace {

std::vector<std::string>* asked_names;

char* resolve(resource_manager*, const char* name) {
    asked_names->push_back(name);
    return access(name, F_OK) == 0 ? strdup(name) : nullptr;
}

} // namespace

temp_folder::temp_folder() {
    std::string pattern = std::filesystem::temp_directory_path() / "loaders-XXXXXX";
    path = mkdtemp(pattern.data());
}

temp_folder::~temp_folder() {
    std::filesystem::remove_all(path);
}

std::string temp_folder::write(const std::string& name, const std::string& content) const {
    const std::string file = path + "/" + name;
    std::filesystem::create_directories(std::filesystem::path(file).parent_path());
    std::ofstream(file, std::ios::binary) << content;
    return file;
}

loaded_model::loaded_model(const std::string& filename, decltype(&group_loadobj) load) {
    asked_names = &asked;
    resource_manager resources = {};
    resources.resolve_path = resolve;
    app_services services = {};
    services.resource = &resources;
    app_record app = {};
    app.services = &services;
    control_record control = {};
    control.app = &app;
    render_context context = {nullptr, &control};
    result = load(&root, filename.c_str(), &context);
}

loaded_model::~loaded_model() {
    scene_free(&root);
}

namespace {

template <class T>
std::string compare(const char* what, const T* got, size_t count, const std::vector<T>& expected) {
    if (count != expected.size()) {
        return std::string(what) + ": " + std::to_string(count) + " instead of " +
               std::to_string(expected.size());
    }
    for (size_t i = 0; i < count; i++) {
        if (memcmp(&got[i], &expected[i], sizeof(T)) == 0) continue;
        return std::string(what) + "[" + std::to_string(i) + "]: " + std::to_string(got[i]) + " instead of " +
               std::to_string(expected[i]);
    }
    return "";
}

std::string compare(const material& got, const reference_material& expected) {
    if (got.name != expected.name) return "material " + std::string(got.name);
    if (memcmp(got.ambient, expected.ambient, 12) != 0 || memcmp(got.diffuse, expected.diffuse, 12) != 0 ||
        memcmp(got.specular, expected.specular, 12) != 0 || memcmp(&got.alpha, &expected.alpha, 4) != 0 ||
        memcmp(&got.spec_exp, &expected.spec_exp, 4) != 0) {
        return "values of material " + expected.name;
    }
    const std::string map = got.diffuseMap ? got.diffuseMap->filename : "none";
    return map == expected.diffuse_map.value_or("none") ? ""
                                                        : "map of material " + expected.name + ": " + map;
}

} // namespace

std::string difference_from_reference(const std::string& filename) {
    const loaded_model loaded(filename);
    const auto reference = reference_load(filename);
    if (loaded.result != reference.has_value()) return "result " + std::to_string(loaded.result);
    if (!reference) return "";

    const trimesh& mesh = loaded.mesh();
    const auto nvertices = static_cast<size_t>(mesh.nvertices);
    const std::string differences[] = {
        compare("vertices", mesh.vertices, nvertices * 3, reference->vertices),
        compare("normals", mesh.normals, nvertices * 3, reference->normals),
        compare("texcoords", mesh.texcoords[0], nvertices * 2, reference->texcoords),
        compare("indices", mesh.indices, static_cast<size_t>(mesh.nfaces) * 3, reference->indices),
        compare("radius", &loaded.root.root.radius, 1, {reference->radius}),
    };
    for (const std::string& difference : differences) {
        if (!difference.empty()) return difference;
    }
    if (mesh.calc_normals == reference->normals_given) return "calc_normals";
    if (static_cast<size_t>(mesh.nmaterials) != reference->segments.size()) return "number of segments";
    for (size_t i = 0; i < reference->segments.size(); i++) {
        const reference_segment& expected = reference->segments[i];
        if (mesh.materials[i].startIndex != expected.start) return "start of segment " + std::to_string(i);
        const std::string difference = compare(*mesh.materials[i].material, expected.material);
        if (!difference.empty()) return difference;
    }
    return "";
}
