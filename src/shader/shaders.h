// The built-in programs, by position.
#ifndef SHADER_SHADERS_H
#define SHADER_SHADERS_H

#include "model3d/shader.h"

enum builtin_shader {
    gouraud_color,
    gouraud_texture,
    phong_color,
    phong_texture,
    flat_color,
    flat_texture,
    builtin_shader_count
};

extern const shader_desc model3d_shaders[builtin_shader_count];

#endif
