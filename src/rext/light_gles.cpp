// Lights: their places in the world, and their uniforms.

#include "model3d/math.h"
#include "rext/shading.h"
#include "scene/light.h"

#include <GLES2/gl2.h>

#include <cstdio>

namespace {

constexpr float white[3] = {1.0f, 1.0f, 1.0f};

// A member of a light's slot: "light_params[i].member".
struct light_name {
    char text[260];
    light_name(int i, const char* member) { snprintf(text, sizeof(text), "light_params[%d].%s", i, member); }
};

void set_light_uniforms(shader_program* program, int i, const float position[4], const float diffuse[3],
                        const float specular[3], float intensity) {
    set_vec4(program, light_name(i, "position").text, position);
    set_vec3(program, light_name(i, "diffuse_color").text, diffuse);
    set_vec3(program, light_name(i, "specular_color").text, specular);
    set_float(program, light_name(i, "intensity").text, intensity);
}

} // namespace

void light_load(void*, int, render_context*) {}
void light_config(void*, render_context*) {}
void light_render(void*, draw_callback, const float[16], void*) {}

void light_prerender(void* node, int, const float parent[16], void*) {
    auto* l = static_cast<light*>(node);
    constexpr float origin[3] = {0.0f, 0.0f, 0.0f};
    constexpr float down[3] = {0.0f, -1.0f, 0.0f};
    if (l->type == light_point) {
        mat_pointvecmul(parent, origin, l->position);
    } else if (l->type == light_directional) {
        mat_dirvecmul(parent, down, l->direction);
    } else {
        kora_app_log(nullptr, 5, "prerendering unsupported light, type: %d", l->type);
    }
}

int set_internal_light_uniforms(shader_program* program, const scene*, const float direction[3],
                                float intensity) {
    glUseProgram(program->program);
    set_int(program, "nlights", 1);
    const float position[4] = {direction[0], direction[1], direction[2], 0.0f};
    set_light_uniforms(program, 0, position, white, white, intensity);
    return 1;
}

int set_scene_light_uniforms(shader_program* program, const scene* s) {
    glUseProgram(program->program);
    set_int(program, "nlights", s->nlights);
    for (int32_t i = 0; i < s->nlights; i++) {
        const light* const l = s->lights[i];
        const float intensity = l->intensity * 0.01f; // percent in the file
        if (l->type == light_point) {
            const float position[4] = {l->position[0], l->position[1], l->position[2], 1.0f};
            set_light_uniforms(program, i, position, l->color, white, intensity);
        } else if (l->type == light_directional) {
            // The shaders want the direction towards the light; the light's own points away from it.
            const float position[4] = {-l->direction[0], -l->direction[1], -l->direction[2], 0.0f};
            set_light_uniforms(program, i, position, l->color, white, intensity);
        } else {
            kora_app_log(nullptr, 1, "light %d is of unsupported type %d", i, l->type);
        }
    }
    return 1;
}
