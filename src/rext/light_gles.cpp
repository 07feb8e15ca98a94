// Lights: their places in the world, and their uniforms.

#include "model3d/math.h"
#include "rext/shading.h"
#include "scene/light.h"

#include <GLES2/gl2.h>

#include <cstdio>
#include <cstring>

namespace {

constexpr float white[3] = {1.0f, 1.0f, 1.0f};

// Lights beyond those of the built-in programs are set by name, which is the first light's but for its
// number.
void set_member(const uniform_table& program, int i, int member, const float* value) {
    if (i < max_lights) {
        uniform_set(program, uniform_light_params + i * light_members + member, value);
        return;
    }
    const builtin_uniform_row& first = builtin_uniforms[uniform_light_params + member];
    char name[260];
    snprintf(name, sizeof(name), "light_params[%d]%s", i, strchr(first.name, '.'));
    lum_gl_shader_set_uniform_value(program.program, name, first.type, first.count, value);
}

void set_light_uniforms(const uniform_table& program, int i, const float position[4], const float diffuse[3],
                        const float specular[3], float intensity) {
    set_member(program, i, light_position, position);
    set_member(program, i, light_diffuse_color, diffuse);
    set_member(program, i, light_specular_color, specular);
    set_member(program, i, light_intensity, &intensity);
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
