// Groups and the host's data: the map of groups by name, their bound values, their configuration.

#include "math/angle.h"
#include "model3d/math.h"
#include "rext/bindings.h"
#include "rext/model3d_rext.h"
#include "rext/state.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr size_t key_size = 256; // of key names and of data-manager keys

// One bound value of a group.
struct binding {
    const char* suffix; // of the key name
    float (group::*values)[3];
    int axis;
};

constexpr binding bindings[] = {
    {"_RX", &group::rotation, 0},    {"_RY", &group::rotation, 1},    {"_RZ", &group::rotation, 2},
    {"_TX", &group::translation, 0}, {"_TY", &group::translation, 1}, {"_TZ", &group::translation, 2},
    {"_SX", &group::scaling, 0},     {"_SY", &group::scaling, 1},     {"_SZ", &group::scaling, 2},
};

// The stored value of a data-manager key, or null.
const float* find_value(control_record* control, data_manager* data, const char* key) {
    const auto* value = data ? static_cast<const float*>(data->get(data, key, 0)) : nullptr;
    if (value) {
        model3d_diag_log(control->app, 8, "found value for data manager key %s", key);
    } else {
        model3d_diag_log(control->app, 8, "no value for data manager value with key %s", key);
    }
    return value;
}

// 1 when the float was changed.
int update_float_key_value(control_record* control, data_manager* data, const char* name, float* target) {
    char key[key_size];
    kor_create_control_data_key(control, name, key, sizeof(key));
    kora_app_log(control->app, 8, "retrieving data for key: %s using data manager key: %s", name, key);
    const float* const value = find_value(control, data, key);
    if (!value || *value == *target) return 0;
    model3d_diag_log(control->app, 6, "found updated data for key: %s, value: %.4f", name, double{*value});
    *target = *value;
    return 1;
}

// The same for a key in degrees and a float in radians.
int update_float_key_radian_value(control_record* control, data_manager* data, const char* name,
                                  float* target) {
    char key[key_size];
    kor_create_control_data_key(control, name, key, sizeof(key));
    model3d_diag_log(control->app, 8, "retrieving data for key: %s using data manager key: %s", name, key);
    const float* const value = find_value(control, data, key);
    if (!value) return 0;
    const float angle = radians_from_degrees(*value);
    if (angle == *target) return 0;
    model3d_diag_log(control->app, 6, "found updated angle data for key: %s, value: %.4f radians", name,
                     double{angle});
    *target = angle;
    return 1;
}

// Map callback: reads the bound values of one group.
int updatecb(const char*, void* value, void* user) {
    auto* g = static_cast<group*>(value);
    const auto* context = static_cast<render_context*>(user);
    control_record* const control = context->control;
    data_manager* const data = control->app->services->data;
    int changed = 0;
    for (const binding& b : bindings) {
        char name[key_size];
        snprintf(name, sizeof(name), "%s%s", g->name, b.suffix);
        float* const target = &(g->*b.values)[b.axis];
        const bool is_angle = b.values == &group::rotation;
        changed |= is_angle ? update_float_key_radian_value(control, data, name, target)
                            : update_float_key_value(control, data, name, target);
    }
    if (changed) context->state->flags |= MODEL3D_FLAG_DIRTY_DEFORMER;
    return 0;
}

// Map callback: the groups are the scene's.
int keep_group(const char*, void*, void*) {
    return 0;
}

void clear_flag(model3d_state* state, model3d_flag flag) {
    state->flags &= ~static_cast<uint32_t>(flag);
}

} // namespace

void groups_renew(model3d_state* state) {
    groups_free(state);
    state->groups = kor_string_map_create(32);
}

void groups_free(model3d_state* state) {
    if (state->groups) kor_string_map_destroy(state->groups, keep_group, nullptr);
    state->groups = nullptr;
}

void group_store(const char* key, group* g, render_context* context) {
    if (!key) return;
    if (!context->state->groups) {
        load_incomplete(context);
        return;
    }
    model3d_diag_log(context->control->app, 6, "adding scene group to map, name: %s", key);
    kor_string_map_set(context->state->groups, key, g);
    // The map cannot say that it had no memory for the key.
    if (!kor_string_map_get(context->state->groups, key)) load_incomplete(context);
}

void group_update(render_context* context) {
    if (context->state->groups) kor_string_map_traverse(context->state->groups, updatecb, context, 0);
}

void group_config(void* node, render_context* context) {
    auto* g = static_cast<group*>(node);
    if (context->state->ignore_bind_transforms) {
        mat_identity(g->transform);
    } else {
        memcpy(g->transform, g->bind_transform, sizeof(g->transform));
    }
    const bool zero = context->state->zero_deformers != 0;
    for (int i = 0; i < 3; i++) {
        g->rotation[i] = zero ? 0.0f : g->bind_rotation[i];
        g->translation[i] = zero ? 0.0f : g->bind_translation[i];
        g->scaling[i] = zero ? 1.0f : g->bind_scaling[i];
    }
    for (int32_t i = 0; i < g->nnodes; i++) {
        g->nodes[i].config(g->nodes[i].node, context);
    }
}

int renderext_model3d_dirty(void*, void*, renderext_instance* rext) {
    model3d_state* const state = state_of(rext);
    kora_app_log(nullptr, 9, "model3d: control initiated dirty check");
    if (!state->loaded || (state->flags & MODEL3D_FLAG_UPDATED)) return 0;

    kora_app_log(nullptr, 8, "model3d: checking for dirty deformers");
    clear_flag(state, MODEL3D_FLAG_DIRTY_DEFORMER);
    render_context context = {state, rext->control};
    group_update(&context);
    state->flags |= MODEL3D_FLAG_UPDATED;
    if (state->flags & MODEL3D_FLAG_DIRTY_DEFORMER) {
        kora_app_log(nullptr, 9, "model3d: found dirty deformer, marking rext dirty");
        rext->dirty_count++;
    } else {
        kora_app_log(nullptr, 9, "model3d: found no dirty deformers, clearing UPDATED flag");
        clear_flag(state, MODEL3D_FLAG_UPDATED);
    }
    return 0;
}
