// The attributes of a control: their table, and what setting one does.

#include "base/heap.h"
#include "math/angle.h"
#include "model3d/model3d_query.h"
#include "rext/model3d_rext.h"
#include "rext/placement.h"
#include "rext/shading.h"

#include <cmath>
#include <cstddef>
#include <cstring>

namespace {

// What a value is, and how the state keeps it.
enum class kind : uint8_t {
    file,    // a text, owned
    keyword, // a text, kept as its place among the keywords
    real,
    angle, // in degrees, kept in radians
    whole
};

// What follows from a new value.
enum class updates : uint8_t {
    nothing,
    view,
    model,
    light,
    groups, // they are configured again before the next frame
    range   // a value that is not above the minimum, or above the maximum, becomes the default
};

struct attribute_row {
    const char* name;
    kind of;
    updates what;
    uint16_t place; // in the state
    model3d_unit unit;
    float initial;
    const char* description;
    bool at_first_use = false; // whether the default is stored then; the host has set the state to zeros
    const char* const* keywords = nullptr;
    float minimum = -INFINITY;
    float maximum = INFINITY;
};

// The keywords of modes, by number.
constexpr auto shading_models = [] {
    std::array<const char*, std::size(shadings) + 1> keywords = {};
    for (size_t i = 0; i < std::size(shadings); ++i) {
        keywords[i] = shadings[i].keyword;
    }
    return keywords;
}();
constexpr const char* lighting_modes[] = {"internal", "model", nullptr};
constexpr const char* camera_modes[] = {"legacy", "fly", "orbit", nullptr};
constexpr const char* culling_modes[] = {"off", "back", nullptr};

constexpr auto none = MODEL3D_UNIT_NONE;
constexpr auto length = MODEL3D_UNIT_LENGTH;
constexpr auto degrees = MODEL3D_UNIT_DEGREES;
constexpr auto factor = MODEL3D_UNIT_FACTOR;

// The extension's own attributes, in the order of their ids.
#define AT(field) offsetof(model3d_state, field)
constexpr attribute_row own_attributes[] = {
    {"filename", kind::file, updates::nothing, AT(filename), none, 0, "the model"},
    {"camera_position_x", kind::real, updates::view, AT(camera_position[0]), length, 0, "camera position"},
    {"camera_position_y", kind::real, updates::view, AT(camera_position[1]), length, 0, "camera position"},
    {"camera_position_z", kind::real, updates::view, AT(camera_position[2]), length, 0, "camera position"},
    {"azimuth", kind::angle, updates::view, AT(azimuth), degrees, 0,
     "turn of the view about the vertical axis"},
    {"elevation", kind::angle, updates::view, AT(elevation), degrees, 0,
     "turn of the view about the horizontal axis"},
    {"camera_field_of_view", kind::real, updates::range, AT(fovy_deg), degrees, default_fovy_deg,
     "vertical; outside of its range: the default", false, nullptr, 0, 180},
    {"model_position_x", kind::real, updates::model, AT(model_position[0]), length, 0, "model position"},
    {"model_position_y", kind::real, updates::model, AT(model_position[1]), length, 0, "model position"},
    {"model_position_z", kind::real, updates::model, AT(model_position[2]), length, 0, "model position"},
    {"model_orientation_phi", kind::angle, updates::model, AT(model_orientation[0]), degrees, 0,
     "turn of the model about x, first"},
    {"model_orientation_theta", kind::angle, updates::model, AT(model_orientation[1]), degrees, 0,
     "turn of the model about y, second"},
    {"model_orientation_psi", kind::angle, updates::model, AT(model_orientation[2]), degrees, 0,
     "turn of the model about z, last"},
    {"light_internal_azimuth", kind::angle, updates::light, AT(light_azimuth), degrees, 0,
     "direction of the internal light"},
    {"light_internal_elevation", kind::angle, updates::light, AT(light_elevation), degrees, 90,
     "direction of the internal light", true},
    {"light_internal_intensity", kind::real, updates::nothing, AT(light_intensity), factor, 1,
     "brightness of the internal light", true},
    {"shading_model", kind::keyword, updates::nothing, AT(shading_model), none, 0,
     "lighting per vertex, per pixel, or none", false, shading_models.data()},
    {"lighting_mode", kind::keyword, updates::nothing, AT(lighting_mode), none, 0,
     "the control's own light, or the model's", false, lighting_modes},
    {"camera_mode", kind::keyword, updates::view, AT(camera_mode), none, 0,
     "how azimuth and elevation turn the view", false, camera_modes},
    {"control_ambient", kind::real, updates::nothing, AT(ambient), factor, 0, "light from everywhere"},
    {"control_lightness", kind::real, updates::nothing, AT(lightness), factor, 0.75f,
     "brightness of the whole picture", true},
    {"culling_mode", kind::keyword, updates::nothing, AT(culling_mode), none, 0, "faces that are left out",
     false, culling_modes},
    {"ignore_bind_transforms", kind::whole, updates::groups, AT(ignore_bind_transforms), none, 1,
     "1: groups start without the file's matrices", true, nullptr, 0, 1},
    {"zero_deformers", kind::whole, updates::groups, AT(zero_deformers), none, 0,
     "1: groups start without the file's movements", true, nullptr, 0, 1},
    {"camera_clip_near", kind::real, updates::nothing, AT(clip_near), length, 0,
     "both 0: from the model's radius"},
    {"camera_clip_far", kind::real, updates::nothing, AT(clip_far), length, 0,
     "both 0: from the model's radius"},
};
#undef AT

constexpr size_t own_count = std::size(own_attributes);

// What every extension has, by id; the host handles them.
constexpr struct {
    const char* name;
    const char* format;
} common_attributes[] = {
    {"x", "4s1"},         {"y", "4s1"},      {"width", "4u1"},        {"height", "4u1"},
    {"color", "4u1"},     {"valign", "4u1"}, {"halign", "4u1"},       {"rotation", "4f1"},
    {"linewidth", "4u1"}, {"alpha", "4u1"},  {"rot_center_x", "4f1"}, {"rot_center_y", "4f1"},
};
constexpr size_t first_own = std::size(common_attributes);
static_assert(first_own + own_count + 1 == model3d_arg_count);

// Of the rows, what the program needs at run time: the rest is in the tables for the host.
struct stored_row {
    uint16_t place;
    kind of;
    updates what;
    bool at_first_use;
};

constexpr auto stored = [] {
    std::array<stored_row, own_count> rows = {};
    for (size_t i = 0; i < own_count; ++i) {
        const attribute_row& a = own_attributes[i];
        rows[i] = {a.place, a.of, a.what, a.at_first_use};
    }
    return rows;
}();

constexpr auto described = [] {
    std::array<model3d_attribute, own_count> rows = {};
    for (size_t i = 0; i < own_count; ++i) {
        const attribute_row& a = own_attributes[i];
        const auto id = static_cast<int32_t>(first_own + i);
        rows[i] = {id, a.unit, a.initial, a.minimum, a.maximum, a.keywords, a.description};
    }
    return rows;
}();

constexpr model3d_query query = {sizeof(model3d_query), MODEL3D_QUERY_VERSION, "model3d", described.data(),
                                 own_count};

constexpr const char* format_of(kind of) {
    return of == kind::whole ? "4s1" : of == kind::real || of == kind::angle ? "4f1" : "1s0";
}

// The field of a row, which is of this type.
template <class T> T& field(model3d_state* state, const stored_row& row) {
    return *reinterpret_cast<T*>(reinterpret_cast<char*>(state) + row.place);
}

float internal(const stored_row& row, float value) {
    return row.of == kind::angle ? radians_from_degrees(value) : value;
}

void update(model3d_state* state, updates what) {
    switch (what) {
    case updates::view:
        update_viewmat(state);
        break;
    case updates::model:
        update_modelmat(state);
        break;
    case updates::light:
        update_light_direction(state);
        break;
    case updates::groups:
        state->flags |= MODEL3D_FLAG_CONFIG_CHANGED;
        break;
    case updates::nothing:
    case updates::range:
        break;
    }
}

// Stores a value that differs, and what follows from it.
template <class T>
void store(const stored_row& row, T value, model3d_state* state, renderext_instance* rext) {
    T& target = field<T>(state, row);
    if (target == value) return;
    target = value;
    ++rext->dirty_count;
    update(state, row.what);
}

void set_keyword(const stored_row& row, const char* const* keywords, const char* text, model3d_state* state,
                 renderext_instance* rext) {
    for (int32_t mode = 0; keywords[mode]; ++mode) {
        if (strcmp(text, keywords[mode]) == 0) store(row, mode, state, rext);
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

constinit std::array<renderext_arg, model3d_arg_count> renderext_model3d_args = [] {
    std::array<renderext_arg, model3d_arg_count> args = {};
    for (size_t i = 0; i < first_own; ++i) {
        const auto& [name, format] = common_attributes[i];
        args[i] = {static_cast<int32_t>(i), name, format};
    }
    for (size_t i = 0; i < own_count; ++i) {
        args[first_own + i] = {described[i].id, own_attributes[i].name, format_of(own_attributes[i].of)};
    }
    return args;
}();

void set_defaults(model3d_state* state) {
    if (state->flags & MODEL3D_FLAG_DEFAULTS_SET) return;
    for (size_t i = 0; i < own_count; ++i) {
        const stored_row& row = stored[i];
        if (!row.at_first_use) continue;
        if (row.of == kind::whole) {
            field<int32_t>(state, row) = static_cast<int32_t>(described[i].initial);
        } else {
            field<float>(state, row) = internal(row, described[i].initial);
        }
    }
    state->flags |= MODEL3D_FLAG_DEFAULTS_SET;
    state->flags &= ~static_cast<uint32_t>(MODEL3D_FLAG_CONFIG_CHANGED);
}

void renderext_model3d_parse(int32_t id, const void* value, renderext_instance* rext) {
    model3d_state* const state = state_of(rext);
    set_defaults(state);
    const size_t own = static_cast<size_t>(id) - first_own; // past the end for all others
    if (own >= own_count) {
        kor_renderext_common_parse(id, value, rext);
        return;
    }
    if (!value) return;
    const stored_row& row = stored[own];
    const model3d_attribute& attribute = described[own];
    switch (row.of) {
    case kind::file:
        set_filename(static_cast<const char*>(value), state, rext);
        break;
    case kind::keyword:
        set_keyword(row, attribute.keywords, static_cast<const char*>(value), state, rext);
        break;
    case kind::whole:
        store(row, *static_cast<const int32_t*>(value), state, rext);
        break;
    case kind::real:
    case kind::angle:
        store(row, internal(row, *static_cast<const float*>(value)), state, rext);
        break;
    }
    if (row.what == updates::range) {
        auto& number = field<float>(state, row);
        const bool inside = number > attribute.minimum && number <= attribute.maximum;
        if (!inside) number = attribute.initial;
    }
    ++rext->dirty_count; // also when nothing changed
}

const model3d_query* model3d_get_query(uint32_t version) {
    return version == MODEL3D_QUERY_VERSION ? &query : nullptr;
}
