// Loads one OBJ file and ends, with the loader it was compiled for; bench/peers.py measures the process.
//
//   peer_load_NAME FILE.obj
//   peer_load_model3d --sheet KILOTRIANGLES FILE.obj    writes the sheet of the other benchmarks instead

#include <cstdio>
#include <cstring>

#if defined(PEER_TINYOBJLOADER)
#include <tiny_obj_loader.h>

namespace {

bool load(const char* path) {
    tinyobj::attrib_t attributes;
    std::vector<tinyobj::shape_t> shapes;
    std::vector<tinyobj::material_t> materials;
    std::string warnings, errors;
    const std::string folder = std::string(path, strrchr(path, '/') + 1);
    return tinyobj::LoadObj(&attributes, &shapes, &materials, &warnings, &errors, path, folder.c_str());
}

} // namespace

#elif defined(PEER_ASSIMP)
#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>

namespace {

bool load(const char* path) {
    Assimp::Importer importer;
    return importer.ReadFile(path, aiProcess_Triangulate | aiProcess_JoinIdenticalVertices) != nullptr;
}

} // namespace

#else
#include "models.h"

namespace {

bool load(const char* path) {
    scene s;
    load_model(&s, path);
    scene_free(&s);
    return true;
}

} // namespace
#endif

int main(int argc, char** argv) {
#if !defined(PEER_TINYOBJLOADER) && !defined(PEER_ASSIMP)
    if (argc == 4 && strcmp(argv[1], "--sheet") == 0) {
        return !std::filesystem::copy_file(all_models().sheet(atoi(argv[2])), argv[3]);
    }
#endif
    if (argc == 2 && strchr(argv[1], '/')) return !load(argv[1]);
    fprintf(stderr, "usage: %s FOLDER/FILE.obj\n", argv[0]);
    return 2;
}
