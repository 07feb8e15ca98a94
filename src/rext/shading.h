// What the frame sends to the programs mesh by mesh and light by light.
#ifndef REXT_SHADING_H
#define REXT_SHADING_H

#include "rext/state.h"

#include <cstddef>
#include <iterator>

// A shading model; its place in the table is its number in the state.
struct shading_row {
    const char* keyword;        // of the attribute, and in trace lines
    builtin_shader programs[2]; // of materials without a texture, and with one
    bool is_lit;                // takes the camera, the lights, normals and specular values
};

inline constexpr shading_row shadings[] = {
    {"gouraud", {gouraud_color, gouraud_texture}, true},
    {"blinn-phong", {phong_color, phong_texture}, true},
    {"flat", {flat_color, flat_texture}, false},
};

// The control's shading model, or null for a number that none has.
inline const shading_row* shading_of(const model3d_state* state) {
    const auto number = static_cast<size_t>(state->shading_model);
    return number < std::size(shadings) ? &shadings[number] : nullptr;
}

// Draw callback: picks the program by material and shading model, binds it and sends what changes from
// segment to segment. `user` is the model3d_state. Returns 1.
int rendercb(const char* mesh_name, const material* m, const float combined[16], void* user);

// A reference to a built-in program, or null after a log line.
kora_reference* renderext_model3d_get_shader_ref(resource_manager* resources, const shader_desc* desc);

// Bind the program and send its lights: the control's own one, `direction` pointing towards it, or those
// of the scene. Return 1.
int set_internal_light_uniforms(const uniform_table& program, const scene* s, const float direction[3],
                                float intensity);
int set_scene_light_uniforms(const uniform_table& program, const scene* s);

#endif
