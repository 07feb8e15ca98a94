#include "loader_host.h"

#include "scarce_heap.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>

namespace {

std::vector<std::string>* asked_names;

char* resolve(resource_manager*, const char* name) {
    asked_names->push_back(name);
    const shortage none(0, 0); // a host has its own memory
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

loaded_model::loaded_model(const std::string& filename) {
    asked_names = &asked;
    resource_manager resources = {};
    resources.resolve_path = resolve;
    load_context context = {&resources, false};
    result = load_scene(&root, filename.c_str(), &context);
    incomplete = context.incomplete;
    const scene empty = {};
    EXPECT_EQ(memcmp(&root, &empty, sizeof(empty)) != 0, result == 1);
}

loaded_model::~loaded_model() {
    scene_free(&root);
    scene_free(&root);
}
