#include "rext/shading.h"

#include "model3d/math.h"
#include "scene/bindings.h"
#include "scene/material.h"
#include "shader/uniform_set.h"

#include <GLES2/gl2.h>

#include <cstring>

namespace {

constexpr material make_plain() {
    material m = {};
    for (int i = 0; i < 3; ++i) {
        m.ambient[i] = 0.2f;
        m.diffuse[i] = 1.0f;
    }
    m.spec_exp = m.alpha = 1.0f;
    return m;
}

// The surface of a mesh without materials.
constexpr material plain = make_plain();

// Computes a segment's matrices, unless they are those of the last segment, as within a mesh.
void place(segment_transform& last, const float model[16], const float combined[16]) {
    if (last.program && same_words(last.combined, combined, sizeof(last.combined))) return;
    memcpy(last.combined, combined, sizeof(last.combined));
    mat_mul(model, combined, last.model_local);
    mat_to3x3(last.model_local, last.normal_model_local);
    last.program = nullptr;
}

void trace_material(const material* m, float global_alpha, float alpha, const shading_row* shading) {
    if (!m) {
        model3d_diag_log(nullptr, 6, "no material, using defaults for solid color shading");
        return;
    }
    model3d_diag_log(nullptr, 6, "material alpha: %f", double{m->alpha});
    model3d_diag_log(nullptr, 6, "global alpha: %f", double{global_alpha});
    model3d_diag_log(nullptr, 6, "combined alpha: %f", double{alpha});
    if (!shading) return;
    model3d_diag_log(nullptr, 6, "material is %s, %s shading", m->diffuseMap ? "textured" : "colored",
                     shading->keyword);
}

} // namespace

int rendercb(const char*, const material* m, const float combined[16], void* user) {
    auto* state = static_cast<model3d_state*>(user);
    segment_transform& transform = state->last_segment;
    place(transform, state->model, combined);
    model3d_diag_log_matrix(nullptr, 6, "local transform matrix", transform.model_local);

    const shading_row* const row = shading_of(state);
    const material& surface = m ? *m : plain;
    const float alpha = surface.alpha * state->alpha;
    const int textured = surface.diffuseMap ? 1 : 0;
    if (model3d_diag_enabled(6)) trace_material(m, state->alpha, alpha, row);
    if (!row) return 1;

    const uniform_table program = state->uniforms[row->programs[textured]];
    glUseProgram(program.program->program);
    const bool is_sent = transform.program == program.program;
    transform.program = program.program;
    uniform_set_inline<uniform_model_local>(program, transform.model_local, is_sent);
    if (row->is_lit) {
        uniform_set_inline<uniform_normal_model_local>(program, transform.normal_model_local, is_sent);
    }
    uniform_set_inline<uniform_ka>(program, surface.ambient);
    uniform_set_inline<uniform_kd>(program, surface.diffuse);
    if (row->is_lit) uniform_set_inline<uniform_ks>(program, surface.specular);
    uniform_set_inline<uniform_ke>(program, surface.emissive);
    if (row->is_lit) uniform_set_inline<uniform_spec_exp>(program, &surface.spec_exp);
    uniform_set_inline<uniform_alpha>(program, &alpha);
    return 1;
}

kora_reference* renderext_model3d_get_shader_ref(resource_manager* resources, const shader_desc* desc) {
    kora_reference* const reference =
        resources ? resources->get_reference(resources, "shader", desc->name, desc) : nullptr;
    if (!reference) kora_app_log(nullptr, 0, "Unable to load shader: %s", desc->name);
    return reference;
}
