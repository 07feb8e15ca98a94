#include "model3d/math.h"
#include "rext/shading.h"
#include "scene/bindings.h"
#include "scene/material.h"

#include <GLES2/gl2.h>

namespace {

// Surface of a mesh without materials.
struct surface {
    float ka[3];
    float kd[3];
    float ks[3];
    float ke[3];
    float spec_exp;
    float alpha;
};

// How a shading model draws: programs and trace lines, colour first, then texture.
struct shading_row {
    builtin_shader programs[2];
    const char* traces[2];
    bool is_lit; // takes normals and specular values
};

constexpr shading_row shadings[] = {
    {{gouraud_color, gouraud_texture},
     {"material is colored, gouraud shading", "material is textured, gouraud shading"},
     true},
    {{phong_color, phong_texture},
     {"material is colored, blinn-phong shading", "material is textured, blinn-phong shading"},
     true},
    {{flat_color, flat_texture},
     {"material is colored, flat shading", "material is textured, flat shading"},
     false},
};

void send_surface(shader_program* program, const surface& s, bool is_lit, const float model_local[16]) {
    glUseProgram(program->program);
    set_mat4(program, "model_local", model_local);
    if (is_lit) {
        float normal_model_local[9];
        mat_to3x3(model_local, normal_model_local);
        set_mat3(program, "normal_model_local", normal_model_local);
    }
    set_vec3(program, "ka", s.ka);
    set_vec3(program, "kd", s.kd);
    if (is_lit) set_vec3(program, "ks", s.ks);
    set_vec3(program, "ke", s.ke);
    if (is_lit) set_float(program, "spec_exp", s.spec_exp);
    set_float(program, "alpha", s.alpha);
}

surface surface_of(const material* m, float alpha) {
    return {{m->ambient[0], m->ambient[1], m->ambient[2]},
            {m->diffuse[0], m->diffuse[1], m->diffuse[2]},
            {m->specular[0], m->specular[1], m->specular[2]},
            {m->emissive[0], m->emissive[1], m->emissive[2]},
            m->spec_exp,
            alpha};
}

} // namespace

int rendercb(const char*, const material* m, const float combined[16], void* user) {
    auto* state = static_cast<model3d_state*>(user);
    float model_local[16];
    mat_mul(state->model, combined, model_local);
    model3d_diag_log_matrix(nullptr, 6, "local transform matrix", model_local);

    const bool known = state->shading_model >= shading_gouraud && state->shading_model <= shading_flat;
    const shading_row* const row = known ? &shadings[state->shading_model] : nullptr;
    if (!m) {
        model3d_diag_log(nullptr, 6, "no material, using defaults for solid color shading");
        if (!row) return 1;
        const surface plain = {{0.2f, 0.2f, 0.2f}, {1.0f, 1.0f, 1.0f}, {}, {}, 1.0f, state->alpha};
        send_surface(state->programs[row->programs[0]], plain, row->is_lit, model_local);
        return 1;
    }

    const float alpha = m->alpha * state->alpha;
    model3d_diag_log(nullptr, 6, "material alpha: %f", double{m->alpha});
    model3d_diag_log(nullptr, 6, "global alpha: %f", double{state->alpha});
    model3d_diag_log(nullptr, 6, "combined alpha: %f", double{alpha});
    if (!row) return 1;
    const int textured = m->diffuseMap ? 1 : 0;
    model3d_diag_log(nullptr, 6, "%s", row->traces[textured]);
    send_surface(state->programs[row->programs[textured]], surface_of(m, alpha), row->is_lit, model_local);
    return 1;
}

kora_reference* renderext_model3d_get_shader_ref(resource_manager* resources, const shader_desc* desc) {
    kora_reference* const reference =
        resources ? resources->get_reference(resources, "shader", desc->name, desc) : nullptr;
    if (!reference) kora_app_log(nullptr, 0, "Unable to load shader: %s", desc->name);
    return reference;
}
