// Lights: their places in the world, and their uniforms.

#include "model3d/math.h"
#include "rext/shading.h"
#include "scene/light.h"

#include <GLES2/gl2.h>

#include <cstdio>

namespace {

constexpr float white[3] = {1.0f, 1.0f, 1.0f};

// A member of a slot that the built-in programs do not have: "light_params[i].member".
void set_by_name(shader_program* program, int i, const char* member, int count, const float* value) {
    char name[260];
    snprintf(name, sizeof(name), "light_params[%d].%s", i, member);
    lum_gl_shader_set_uniform_value(program, name, UNIFORM_VALUE_FLOAT, count, value);
}

void set_light_uniforms(const uniform_table& program, int i, const float position[4], const float diffuse[3],
                        const float specular[3], float intensity) {
    if (i < max_lights) {
        const int first = uniform_light_params + i * light_members;
        uniform_set(program, first + light_position, position);
        uniform_set(program, first + light_diffuse_color, diffuse);
        uniform_set(program, first + light_specular_color, specular);
        uniform_set(program, first + light_intensity, &intensity);
    } else {
        set_by_name(program.program, i, "position", 4, position);
        set_by_name(program.program, i, "diffuse_color", 3, diffuse);
        set_by_name(program.program, i, "specular_color", 3, specular);
        set_by_name(program.program, i, "intensity", 1, &intensity);
    }
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

int set_internal_light_uniforms(const uniform_table& program, const scene*, const float direction[3],
                                float intensity) {
    glUseProgram(program.program->program);
    const GLint nlights = 1;
    uniform_set(program, uniform_nlights, &nlights);
    const float position[4] = {direction[0], direction[1], direction[2], 0.0f};
    set_light_uniforms(program, 0, position, white, white, intensity);
    return 1;
}

int set_scene_light_uniforms(const uniform_table& program, const scene* s) {
    glUseProgram(program.program->program);
    uniform_set(program, uniform_nlights, &s->nlights);
    for (int32_t i = 0; i < s->nlights; ++i) {
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
