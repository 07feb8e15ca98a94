// The OBJ dialect once more, written down literally and slowly: blocks of 1023 bytes, seeks, sscanf.
// Shares nothing with the loader, so that both can be compared.
#ifndef OBJ_REFERENCE_H
#define OBJ_REFERENCE_H

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

struct reference_material {
    std::string name;
    float ambient[3] = {0.2f, 0.2f, 0.2f};
    float diffuse[3] = {0.8f, 0.8f, 0.8f};
    float specular[3] = {1.0f, 1.0f, 1.0f};
    float spec_exp = 0.0f;
    float alpha = 1.0f;
    std::optional<std::string> diffuse_map;
};

struct reference_model {
    std::vector<float> vertices, normals, texcoords;
    std::vector<uint32_t> indices;
    std::vector<std::pair<reference_material, int32_t>> segments; // each with its first triangle
    bool normals_given = false;
    float radius = 0.0f;
};

// Nothing when the file cannot be opened.
std::optional<reference_model> reference_load(const std::string& filename);

// sscanf in the C locale with a format of `count` "%f".
int reference_scan(const char* text, float* values, int count);

#endif
