// The attributes of a control: their table, and what setting one does.

#include "base/heap.h"
#include "math/angle.h"
#include "rext/model3d_rext.h"
#include "rext/placement.h"
#include "rext/state.h"

#include <cstring>

namespace {

constexpr char text_format[] = "1s0";
constexpr char signed_format[] = "4s1";
constexpr char unsigned_format[] = "4u1";
constexpr char float_format[] = "4f1";

// Ids of the extension's own attributes; those below are every extension's.
enum attribute : int32_t {
    attr_filename = 12,
    attr_camera_position_x,
    attr_camera_position_y,
    attr_camera_position_z,
    attr_azimuth,
    attr_elevation,
    attr_camera_field_of_view,
    attr_model_position_x,
    attr_model_position_y,
    attr_model_position_z,
    attr_model_orientation_phi,
    attr_model_orientation_theta,
    attr_model_orientation_psi,
    attr_light_internal_azimuth,
    attr_light_internal_elevation,
    attr_light_internal_intensity,
    attr_shading_model,
    attr_lighting_mode,
    attr_camera_mode,
    attr_control_ambient,
    attr_control_lightness,
    attr_culling_mode,
    attr_ignore_bind_transforms,
    attr_zero_deformers,
    attr_camera_clip_near,
    attr_camera_clip_far,
    attr_end
};

void clamp_field_of_view(model3d_state* state) {
    if (!(state->fovy_deg > 0.0f) || state->fovy_deg > 180.0f) state->fovy_deg = 60.0f;
}

void mark_config_changed(model3d_state* state) {
    state->flags |= MODEL3D_FLAG_CONFIG_CHANGED;
}

// What is done after a value changed; may be null.
using update = void (*)(model3d_state*);

enum class unit { plain, degrees };

struct float_attr {
    attribute id;
    float* (*field)(model3d_state*);
    unit in;
    update changed;
};

#define FIELD(name) [](model3d_state* s) { return &s->name; }

constexpr float_attr float_attrs[] = {
    {attr_camera_position_x, FIELD(camera_position[0]), unit::plain, update_viewmat},
    {attr_camera_position_y, FIELD(camera_position[1]), unit::plain, update_viewmat},
    {attr_camera_position_z, FIELD(camera_position[2]), unit::plain, update_viewmat},
    {attr_azimuth, FIELD(azimuth), unit::degrees, update_viewmat},
    {attr_elevation, FIELD(elevation), unit::degrees, update_viewmat},
    {attr_camera_field_of_view, FIELD(fovy_deg), unit::plain, nullptr},
    {attr_model_position_x, FIELD(model_position[0]), unit::plain, update_modelmat},
    {attr_model_position_y, FIELD(model_position[1]), unit::plain, update_modelmat},
    {attr_model_position_z, FIELD(model_position[2]), unit::plain, update_modelmat},
    {attr_model_orientation_phi, FIELD(model_orientation[0]), unit::degrees, update_modelmat},
    {attr_model_orientation_theta, FIELD(model_orientation[1]), unit::degrees, update_modelmat},
    {attr_model_orientation_psi, FIELD(model_orientation[2]), unit::degrees, update_modelmat},
    {attr_light_internal_azimuth, FIELD(light_azimuth), unit::degrees, update_light_direction},
    {attr_light_internal_elevation, FIELD(light_elevation), unit::degrees, update_light_direction},
    {attr_light_internal_intensity, FIELD(light_intensity), unit::plain, nullptr},
    {attr_control_ambient, FIELD(ambient), unit::plain, nullptr},
    {attr_control_lightness, FIELD(lightness), unit::plain, nullptr},
    {attr_camera_clip_near, FIELD(clip_near), unit::plain, nullptr},
    {attr_camera_clip_far, FIELD(clip_far), unit::plain, nullptr},
};

#undef FIELD

struct keyword_attr {
    attribute id;
    int32_t model3d_state::*field;
    const char* keywords[3]; // by mode number; unused ones null
    update changed;
};

constexpr keyword_attr keyword_attrs[] = {
    {attr_shading_model, &model3d_state::shading_model, {"gouraud", "blinn-phong", "flat"}, nullptr},
    {attr_lighting_mode, &model3d_state::lighting_mode, {"internal", "model"}, nullptr},
    {attr_camera_mode, &model3d_state::camera_mode, {"legacy", "fly", "orbit"}, update_viewmat},
    {attr_culling_mode, &model3d_state::culling_mode, {"off", "back"}, nullptr},
};

struct int_attr {
    attribute id;
    int32_t model3d_state::*field;
    update changed;
};

constexpr int_attr int_attrs[] = {
    {attr_ignore_bind_transforms, &model3d_state::ignore_bind_transforms, mark_config_changed},
    {attr_zero_deformers, &model3d_state::zero_deformers, mark_config_changed},
};

template <class Row, size_t n> const Row* find(const Row (&rows)[n], int32_t id) {
    for (const Row& row : rows) {
        if (row.id == id) return &row;
    }
    return nullptr;
}

// Stores a value that differs, and what follows from it.
template <class T>
void store(T* field, T value, update changed, model3d_state* state, renderext_instance* rext) {
    if (*field == value) return;
    *field = value;
    ++rext->dirty_count;
    if (changed) changed(state);
}

void set_keyword(const keyword_attr& row, const char* text, model3d_state* state, renderext_instance* rext) {
    for (int32_t mode = 0; mode < 3 && row.keywords[mode]; ++mode) {
        if (strcmp(text, row.keywords[mode]) == 0)
            store(&(state->*row.field), mode, row.changed, state, rext);
    }
}

void set_filename(const char* name, model3d_state* state, renderext_instance* rext) {
    if (state->filename) {
        if (strcmp(state->filename, name) == 0) return;
        heap_clear(state->filename);
        unload_model(state);
    }
    state->filename = heap_text(name);
    state->loaded = 0;
    ++rext->dirty_count;
}

} // namespace

renderext_arg renderext_model3d_args[] = {
    {0, "x", signed_format},
    {1, "y", signed_format},
    {2, "width", unsigned_format},
    {3, "height", unsigned_format},
    {4, "color", unsigned_format},
    {5, "valign", unsigned_format},
    {6, "halign", unsigned_format},
    {7, "rotation", float_format},
    {8, "linewidth", unsigned_format},
    {9, "alpha", unsigned_format},
    {10, "rot_center_x", float_format},
    {11, "rot_center_y", float_format},
    {attr_filename, "filename", text_format},
    {attr_camera_position_x, "camera_position_x", float_format},
    {attr_camera_position_y, "camera_position_y", float_format},
    {attr_camera_position_z, "camera_position_z", float_format},
    {attr_azimuth, "azimuth", float_format},
    {attr_elevation, "elevation", float_format},
    {attr_camera_field_of_view, "camera_field_of_view", float_format},
    {attr_model_position_x, "model_position_x", float_format},
    {attr_model_position_y, "model_position_y", float_format},
    {attr_model_position_z, "model_position_z", float_format},
    {attr_model_orientation_phi, "model_orientation_phi", float_format},
    {attr_model_orientation_theta, "model_orientation_theta", float_format},
    {attr_model_orientation_psi, "model_orientation_psi", float_format},
    {attr_light_internal_azimuth, "light_internal_azimuth", float_format},
    {attr_light_internal_elevation, "light_internal_elevation", float_format},
    {attr_light_internal_intensity, "light_internal_intensity", float_format},
    {attr_shading_model, "shading_model", text_format},
    {attr_lighting_mode, "lighting_mode", text_format},
    {attr_camera_mode, "camera_mode", text_format},
    {attr_control_ambient, "control_ambient", float_format},
    {attr_control_lightness, "control_lightness", float_format},
    {attr_culling_mode, "culling_mode", text_format},
    {attr_ignore_bind_transforms, "ignore_bind_transforms", signed_format},
    {attr_zero_deformers, "zero_deformers", signed_format},
    {attr_camera_clip_near, "camera_clip_near", float_format},
    {attr_camera_clip_far, "camera_clip_far", float_format},
    {0, nullptr, nullptr},
};

void renderext_model3d_parse(int32_t id, const void* value, renderext_instance* rext) {
    model3d_state* const state = state_of(rext);
    set_defaults(state);
    if (id < attr_filename || id >= attr_end) {
        kor_renderext_common_parse(id, value, rext);
        return;
    }
    if (!value) return;
    if (const float_attr* row = find(float_attrs, id)) {
        const float number = *static_cast<const float*>(value);
        store(row->field(state), row->in == unit::degrees ? radians_from_degrees(number) : number,
              row->changed, state, rext);
        if (id == attr_camera_field_of_view) clamp_field_of_view(state);
    } else if (const keyword_attr* words = find(keyword_attrs, id)) {
        set_keyword(*words, static_cast<const char*>(value), state, rext);
    } else if (const int_attr* whole = find(int_attrs, id)) {
        store(&(state->*whole->field), *static_cast<const int32_t*>(value), whole->changed, state, rext);
    } else {
        set_filename(static_cast<const char*>(value), state, rext);
    }
    ++rext->dirty_count; // also when nothing changed
}
