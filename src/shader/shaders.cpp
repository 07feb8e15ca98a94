#include "shader/shaders.h"

namespace {

#include "sources.inc"

// Index is location, as the mesh drawing feeds it.
constexpr const char* col_attribs[] = {"pos", "normal", nullptr};
constexpr const char* tex_attribs[] = {"pos", "normal", "tex", nullptr};

} // namespace

const shader_desc model3d_shaders[] = {
    {"gouraud_color", SHADER_TYPE_SOURCE, gouraud_color_vsh, gouraud_color_fsh, col_attribs},
    {"gouraud_texture", SHADER_TYPE_SOURCE, gouraud_tex_vsh, gouraud_tex_fsh, tex_attribs},
    {"phong_color", SHADER_TYPE_SOURCE, phong_color_vsh, phong_color_fsh, col_attribs},
    {"phong_texture", SHADER_TYPE_SOURCE, phong_tex_vsh, phong_tex_fsh, tex_attribs},
    {"flat_color", SHADER_TYPE_SOURCE, flat_color_vsh, flat_color_fsh, col_attribs},
    {"flat_texture", SHADER_TYPE_SOURCE, flat_tex_vsh, flat_tex_fsh, tex_attribs},
};
