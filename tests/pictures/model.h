// Models for the picture tests, kept as lists of faces so that the same data becomes a file for the plug-in
// and triangles for the reference renderer, without a parser in between.
#ifndef TESTS_PICTURES_MODEL_H
#define TESTS_PICTURES_MODEL_H

#include "image.h"

#include <array>
#include <compare>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace pictures {

// A place, direction, colour or texture coordinate.
struct vec {
    double x = 0, y = 0, z = 0, w = 0;
    friend auto operator<=>(const vec&, const vec&) = default;
};

// Rows, as written on paper; vectors are columns on the right.
using mat4 = std::array<std::array<double, 4>, 4>;
constexpr mat4 identity{{{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}};

struct corner {
    vec position;
    std::optional<vec> normal;
    std::optional<vec> texcoord; // as in OBJ files: v grows upwards
};

// material: index into the model's materials; -1 before the first one is chosen.
struct face {
    int material;
    std::vector<corner> corners;
};

// The values are what a material has when its library does not say.
struct material {
    vec ambient{0.2, 0.2, 0.2}, diffuse{0.8, 0.8, 0.8}, specular{1, 1, 1}, emissive;
    double exponent = 0, alpha = 1;
    std::string map; // file name of the diffuse texture, or empty
};

// Directional lights shine down their group's y axis, point lights from its origin.
struct lamp {
    enum kind { directional = 1, point = 2 } type;
    vec colour{1, 1, 1};
    double percent = 100;
};

struct model {
    std::vector<material> materials;
    std::vector<face> faces;
    std::map<std::string, image> textures; // by file name; a map that is missing here has no file

    // Scene files alone hold the rest, and the materials' emissive colours. The model is a group there: its
    // mesh has a matrix of its own, and all of it is placed by matrix * T * Rx * Ry * Rz * S, in degrees.
    mat4 mesh_matrix = identity, matrix = identity;
    vec translation, rotation, scaling{1, 1, 1};
    std::vector<lamp> lamps;
    std::vector<model> groups; // below this one; their textures are the outermost model's

    double radius() const; // of the farthest corner
};

// The builders add faces with the material added last (none yet: -1), wound counter-clockwise seen from
// outside. `normals`: the file carries the exact normals; without, the plug-in computes its own.
void add_material(model& m, vec ambient, vec diffuse, vec specular, double exponent, double alpha = 1,
                  const std::string& map = "");
void add_sphere(model& m, vec centre, double radius, int slices, int stacks, bool normals);
// With texture coordinates, the whole picture on every side, when its material has a map.
void add_box(model& m, vec centre, vec half, bool normals);
// A prism along z with regular n-gons as its ends.
void add_prism(model& m, vec centre, double radius, double half_length, int n, bool normals);
// A rectangle facing +z whose texture coordinates run from uv0 (bottom left) to uv1 (top right).
void add_quad(model& m, vec centre, double half_width, double half_height, vec uv0 = {0, 0},
              vec uv1 = {1, 1});

// Writes model.obj, model.mtl and the textures into a folder. Material lines with default values are left
// out of the library. False when a file cannot be written.
bool model_write(const model& m, const std::string& folder);

// Writes a scene file whose outermost group is named "part". Textures are expected beside it. Every face has
// a material and every corner a normal; groups without faces have no mesh.
bool model_write_qel(const model& m, const std::string& file);

} // namespace pictures

#endif
