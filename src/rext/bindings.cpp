// Groups and the host's data: the map of groups by name, their bound values, their configuration.

#include "rext/bindings.h"

#include "base/heap.h"
#include "math/angle.h"
#include "model3d/math.h"
#include "rext/data_keys.h"
#include "rext/model3d_rext.h"
#include "rext/state.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace {

constexpr size_t key_size = 256; // of key names and of data-manager keys

// What the keys of a group move, three values each, in the order of the suffixes.
constexpr float (group::*bound_values[])[3] = {&group::rotation, &group::translation, &group::scaling};
static_assert(std::size(bound_values) * 3 == bindings_per_group);

// Writes the name of a group's key, and the data manager's for it.
void make_key(const control_record* control, const group* g, int i, char name[key_size], char key[key_size]) {
    snprintf(name, key_size, "%s%s", g->name, data_key_suffixes[i]);
    key[0] = '\0'; // for a host that writes nothing
    kor_create_control_data_key(control, name, key, key_size);
}

void binding_keys_free(binding_keys& keys) {
    free(keys.groups);
    free(keys.texts);
    keys = {};
}

// Makes room for so many elements.
template <class T> bool grow(T*& array, int32_t& capacity, int64_t needed) {
    if (needed <= capacity) return true;
    const int64_t larger = std::max<int64_t>(needed, doubled(capacity));
    if (larger > INT32_MAX || !heap_resize(array, static_cast<size_t>(larger))) return false;
    capacity = static_cast<int32_t>(larger);
    return true;
}

// Makes room for a group and its texts.
bool reserve_group(binding_keys& keys) {
    constexpr int64_t most = 2 * bindings_per_group * key_size;
    return grow(keys.groups, keys.capacity, int64_t{keys.count} + 1) &&
           grow(keys.texts, keys.text_capacity, keys.text_size + most);
}

// Appends a text, for which reserve_group has made room; returns where it begins.
int32_t keep_text(binding_keys& keys, const char* text) {
    const int32_t begin = keys.text_size;
    const size_t size = strlen(text) + 1;
    memcpy(keys.texts + begin, text, size);
    keys.text_size += static_cast<int32_t>(size);
    return begin;
}

// Stores the texts of a group's keys behind those of the groups before it. When memory runs out all are
// dropped and the result is null; the keys are then made anew at every check.
const bound_group* keep_keys(binding_keys& keys, const group* g) {
    if (!reserve_group(keys)) {
        binding_keys_free(keys);
        keys.is_complete = true;
        return nullptr;
    }
    bound_group& bound = keys.groups[keys.count++];
    bound.owner = g;
    bound.name = g->name;
    for (int i = 0; i < bindings_per_group; ++i) {
        char name[key_size];
        char key[key_size];
        make_key(keys.control, g, i, name, key);
        bound.keys[i] = {keep_text(keys, name), keep_text(keys, key)};
    }
    return &bound;
}

// The stored value of a data-manager key, or null.
const float* find_value(control_record* control, data_manager* data, const char* key) {
    const auto* value = data ? static_cast<const float*>(data->get(data, key, 0)) : nullptr;
    if (!model3d_diag_enabled(8)) return value;
    if (value) {
        model3d_diag_log(control->app, 8, "found value for data manager key %s", key);
    } else {
        model3d_diag_log(control->app, 8, "no value for data manager value with key %s", key);
    }
    return value;
}

// Whether a value differs from the current one. NaN counts as equal to NaN here: compared as a number it
// would be a change at every check, and the control would never stop being drawn again.
bool is_change(float value, float current) {
    return value != current && !(std::isnan(value) && std::isnan(current));
}

// 1 when the float was changed.
int update_float_key_value(control_record* control, data_manager* data, const char* name, const char* key,
                           float* target) {
    kora_app_log(control->app, 8, "retrieving data for key: %s using data manager key: %s", name, key);
    const float* const value = find_value(control, data, key);
    if (!value || !is_change(*value, *target)) return 0;
    model3d_diag_log(control->app, 6, "found updated data for key: %s, value: %.4f", name, double{*value});
    *target = *value;
    return 1;
}

// The same for a key in degrees and a float in radians.
int update_float_key_radian_value(control_record* control, data_manager* data, const char* name,
                                  const char* key, float* target) {
    if (model3d_diag_enabled(8)) {
        model3d_diag_log(control->app, 8, "retrieving data for key: %s using data manager key: %s", name,
                         key);
    }
    const float* const value = find_value(control, data, key);
    if (!value) return 0;
    const float angle = radians_from_degrees(*value);
    if (!is_change(angle, *target)) return 0;
    model3d_diag_log(control->app, 6, "found updated angle data for key: %s, value: %.4f radians", name,
                     double{angle});
    *target = angle;
    return 1;
}

// A walk over the map of groups.
struct update_walk {
    render_context* context;
    int32_t next; // group in the keys that were written down
};

// The stored keys of a group, which the first walk over the map stores. Null when there was no memory for
// them, when they belong to another control, or when the group was added or renamed after the first walk.
const bound_group* next_bound(update_walk& walk, const group* g) {
    binding_keys& keys = walk.context->state->keys;
    if (!keys.is_complete) return keep_keys(keys, g);
    if (walk.next >= keys.count || keys.control != walk.context->control) return nullptr;
    const bound_group& bound = keys.groups[walk.next];
    if (bound.owner != g || bound.name != g->name) return nullptr;
    ++walk.next;
    return &bound;
}

// Map callback: reads the bound values of one group.
int updatecb(const char*, void* value, void* user) {
    auto* g = static_cast<group*>(value);
    auto* walk = static_cast<update_walk*>(user);
    model3d_state* const state = walk->context->state;
    control_record* const control = walk->context->control;
    data_manager* const data = control->app->services->data;
    const bound_group* const bound = next_bound(*walk, g);
    int changed = 0;
    int i = 0; // key
    for (const auto values : bound_values) {
        const bool is_angle = values == &group::rotation;
        for (float& target : g->*values) {
            char name_buffer[key_size];
            char key_buffer[key_size];
            const char* name = name_buffer;
            const char* key = key_buffer;
            if (bound) {
                name = state->keys.texts + bound->keys[i].name;
                key = state->keys.texts + bound->keys[i].key;
            } else {
                make_key(control, g, i, name_buffer, key_buffer);
            }
            changed |= is_angle ? update_float_key_radian_value(control, data, name, key, &target)
                                : update_float_key_value(control, data, name, key, &target);
            ++i;
        }
    }
    if (changed) state->flags |= MODEL3D_FLAG_DIRTY_DEFORMER;
    return 0;
}

// Map callback for destroying the map: the scene owns the groups.
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
    binding_keys_free(state->keys);
}

void group_store(const char* key, group* g, render_context* context) {
    if (!key || !*key) return;
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
    if (!context->state->groups) return;
    binding_keys& keys = context->state->keys;
    const bool is_first = !keys.is_complete;
    if (is_first) keys.control = context->control;
    update_walk walk = {context, 0};
    kor_string_map_traverse(context->state->groups, updatecb, &walk, 0);
    keys.is_complete = true;
    if (is_first && keys.texts) heap_resize(keys.texts, static_cast<size_t>(keys.text_size));
}

void group_config(void* node, render_context* context) {
    auto* g = static_cast<group*>(node);
    if (context->state->ignore_bind_transforms) {
        mat_identity(g->transform);
    } else {
        memcpy(g->transform, g->bind_transform, sizeof(g->transform));
    }
    const bool zero = context->state->zero_deformers != 0;
    for (int i = 0; i < 3; ++i) {
        g->rotation[i] = zero ? 0.0f : g->bind_rotation[i];
        g->translation[i] = zero ? 0.0f : g->bind_translation[i];
        g->scaling[i] = zero ? 1.0f : g->bind_scaling[i];
    }
    for (int32_t i = 0; i < g->nnodes; ++i) {
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
        ++rext->dirty_count;
    } else {
        kora_app_log(nullptr, 9, "model3d: found no dirty deformers, clearing UPDATED flag");
        clear_flag(state, MODEL3D_FLAG_UPDATED);
    }
    return 0;
}
