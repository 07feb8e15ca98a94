// A program's active uniforms. Those of the built-in programs are looked up once, when the program is listed,
// because a frame sets thousands of values.
#ifndef SHADER_UNIFORM_H
#define SHADER_UNIFORM_H

#include "model3d/shader.h"

constexpr int max_lights = 8; // of the built-in programs

enum light_member {
    light_position,
    light_diffuse_color,
    light_specular_color,
    light_intensity,
    light_members
};

// Uniforms of the built-in programs.
enum builtin_uniform {
    uniform_proj_view,
    uniform_camera_pos,
    uniform_lightness,
    uniform_ambient_factor,
    uniform_diffuse_sampler,
    uniform_nlights,
    uniform_model_local,
    uniform_normal_model_local,
    uniform_ka,
    uniform_kd,
    uniform_ks,
    uniform_ke,
    uniform_spec_exp,
    uniform_alpha,
    uniform_light_params, // light_members for each light
    builtin_uniform_count = uniform_light_params + max_lights * light_members
};

// A uniform record that this library made.
struct own_uniform : shader_uniform {
    uint32_t value_size; // bytes of the value; 0 without
};

struct builtin_uniform_row {
    const char* name;
    int type; // UNIFORM_VALUE_*
    int count;
};

#define LIGHT_ROWS(i)                                                                                        \
    {"light_params[" #i "].position", UNIFORM_VALUE_FLOAT, 4},                                               \
        {"light_params[" #i "].diffuse_color", UNIFORM_VALUE_FLOAT, 3},                                      \
        {"light_params[" #i "].specular_color", UNIFORM_VALUE_FLOAT, 3}, {                                   \
        "light_params[" #i "].intensity", UNIFORM_VALUE_FLOAT, 1                                             \
    }

inline constexpr builtin_uniform_row builtin_uniforms[builtin_uniform_count] = {
    {"proj_view", UNIFORM_VALUE_MATRIX, 4},
    {"camera_pos", UNIFORM_VALUE_FLOAT, 3},
    {"lightness", UNIFORM_VALUE_FLOAT, 1},
    {"ambient_factor", UNIFORM_VALUE_FLOAT, 1},
    {"diffuseSampler", UNIFORM_VALUE_INT, 1},
    {"nlights", UNIFORM_VALUE_INT, 1},
    {"model_local", UNIFORM_VALUE_MATRIX, 4},
    {"normal_model_local", UNIFORM_VALUE_MATRIX, 3},
    {"ka", UNIFORM_VALUE_FLOAT, 3},
    {"kd", UNIFORM_VALUE_FLOAT, 3},
    {"ks", UNIFORM_VALUE_FLOAT, 3},
    {"ke", UNIFORM_VALUE_FLOAT, 3},
    {"spec_exp", UNIFORM_VALUE_FLOAT, 1},
    {"alpha", UNIFORM_VALUE_FLOAT, 1},
    LIGHT_ROWS(0),
    LIGHT_ROWS(1),
    LIGHT_ROWS(2),
    LIGHT_ROWS(3),
    LIGHT_ROWS(4),
    LIGHT_ROWS(5),
    LIGHT_ROWS(6),
    LIGHT_ROWS(7),
};
#undef LIGHT_ROWS

// A program with its built-in uniforms, by builtin_uniform; null where it has none of that name, or a record
// that was not made here: those are set by name.
struct uniform_table {
    shader_program* program;
    own_uniform* const* uniforms;
};
extern own_uniform* no_uniforms[builtin_uniform_count]; // all null

// Asks GL for every active uniform and fills the record's map, which is null before. `name` is the
// resource's, for the log. False when memory ran out: then some uniforms are missing from the map.
bool enumerate_uniforms(app_record* app, shader_program* record, const char* name);

// Looks the built-in uniforms up in the map of a record of our own.
void find_builtin_uniforms(const shader_program* record, own_uniform* found[builtin_uniform_count]);

// Sets a value of any known type; as lum_gl_shader_set_uniform_value, which does it when `uniform` is null.
int uniform_set_any(own_uniform* uniform, shader_program* program, const char* name, int type, int count,
                    const void* value);

// Sets a value that has the type of the built-in uniform.
inline int uniform_set(const uniform_table& table, int which, const void* value) {
    const builtin_uniform_row& row = builtin_uniforms[which];
    return uniform_set_any(table.uniforms[which], table.program, row.name, row.type, row.count, value);
}

#endif
